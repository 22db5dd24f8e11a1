// SPDX-License-Identifier: MIT
/// \file
/// Tests of the whole host: a session with the driver, loaded by its path, and the simulated station over TCP. The words
/// of variables, values and faults are separated by blanks. Main thread.

#pragma once

#include "../host/cli/panel_session.h"
#include "../host/explain/value_text.h"
#include "../host/explain/writes.h"
#include "host_words.h"

#include <functional>

const int tooLongMs = 600000; // for a test: nobody waits for it

class SessionTest : public testing::Test
{
protected:
    SessionTest()
    {
        options.driverPath = QStringLiteral(DRIVER_PATH);
        options.connection.timeoutMs = tooLongMs;
        options.connection.backOff = {1, 1, 0, 0};
        options.retries = 0;
    }

    /// VARIABLE or VARIABLE=VALUES each; the station has their units.
    void open(const QByteArray &texts, const QByteArray &faults = "")
    {
        QList<Variable> named;
        for (const QString &text : words(texts))
            named << variable(text.section(QLatin1Char('='), 0, 0));
        options.faults = *parseFaults(words(faults), nullptr);
        session.reset(); // ahead of the next one, which has the same driver
        session = std::make_unique<PanelSession>(options, named);
        QString error;
        ASSERT_EQ(session->prepare(&error), ExitDone) << qPrintable(error);
    }

    PanelSnapshot waitUntil(const std::function<bool(const PanelSnapshot &)> &isReached)
    {
        PanelSnapshot now = session->state().snapshot();
        while (!isReached(now) && !now.isEnded) {
            session->state().waitForNews(now.passes, now.itemsEnded(), 50);
            now = session->state().snapshot();
        }
        return now;
    }

    PanelSnapshot waitForEnd()
    {
        return waitUntil([](const PanelSnapshot &) { return false; });
    }

    PanelSnapshot readOnce(const QByteArray &texts, const QByteArray &faults = "")
    {
        open(texts, faults);
        EXPECT_TRUE(session->readVariablesOnce());
        session->start();
        return waitUntil([&texts](const PanelSnapshot &now) { return now.itemsEnded() == words(texts).size(); });
    }

    void startPolling(const QByteArray &texts, const QByteArray &faults = "")
    {
        open(texts, faults);
        session->pollVariables();
        session->start();
    }

    PanelSnapshot poll(int passes, const QByteArray &texts, const QByteArray &faults = "")
    {
        options.loop.passes = passes;
        startPolling(texts, faults);
        return waitForEnd();
    }

    QList<WriteItem> queue(const QByteArray &texts)
    {
        QList<WriteItem> items;
        for (const QString &text : words(texts)) {
            WriteItem item;
            item.variable = variable(text.section(QLatin1Char('='), 0, 0));
            QString error;
            item.value = parseValues(item.variable, text.section(QLatin1Char('='), 1), &error).value_or("");
            EXPECT_EQ(error, QString());
            items << item;
        }
        queueWrites(session->driver(), options.block, &items);
        return items;
    }

    /// Writes, and tells what became of each.
    std::string write(const QByteArray &texts, const QByteArray &faults = "")
    {
        open(texts, faults);
        const QList<WriteItem> items = queue(texts);
        const auto inQueue = std::count_if(items.begin(), items.end(), [](const WriteItem &item) { return item.queued > 0; });
        session->start();
        PanelSnapshot now = waitUntil([inQueue](const PanelSnapshot &n) { return n.itemsEnded() == inQueue; });
        QStringList outcomes;
        for (int i = 0; i < items.size(); ++i)
            outcomes << writeOutcome(items.at(i), now.items[i]).text;
        return outcomes.join(QLatin1String(" | ")).toStdString();
    }

    int registerOf(int unit, int address) { return session->station()->value(unit, QModbusDataUnit::HoldingRegisters, address); }

    PanelOptions options;
    std::unique_ptr<PanelSession> session;
};
