// SPDX-License-Identifier: MIT
// The whole host, driver loaded by its path, against the simulated station over TCP.

#include "panel_session.h"
#include "plan.h"
#include "value_text.h"
#include "write_outcome.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using Table = QModbusDataUnit;

const int tooLongMs = 600000; // for a test: nobody waits for it

QStringList list(const char *words)
{
    return QString::fromLatin1(words).split(QLatin1Char(' '));
}

Variable variable(const QString &text)
{
    QString error;
    const std::optional<Variable> parsed = parseVariable(text, &error);
    EXPECT_TRUE(parsed) << qPrintable(error);
    return parsed.value_or(Variable());
}

/// What is shown for each variable: its value, or why there is none.
std::string valuesOf(const PanelSnapshot &now)
{
    QStringList texts;
    for (const ValueState &value : now.values) {
        const bool isGood = value.readAtMs() >= 0 && value.failure().isEmpty();
        texts << (isGood ? valueText(value.variable(), value.value(), ValueFormat::Decimal) : value.failure());
    }
    return texts.join(QLatin1String(" | ")).toStdString();
}

class SessionTest : public testing::Test
{
protected:
    SessionTest()
    {
        options.driverPath = QStringLiteral(DRIVER_PATH);
        options.connection.timeoutMs = tooLongMs;
        options.connection.backOff = {1, 1};
    }

    /// A station that may be silent, and a request that is then sent once.
    void expectSilence()
    {
        options.connection.timeoutMs = 500;
        options.retries = 0;
    }

    void open(const char *words, const char *fault = nullptr)
    {
        variables.clear();
        for (const QString &word : list(words))
            variables << variable(word.section(QLatin1Char('='), 0, 0));
        options.faults.clear();
        if (fault)
            options.faults = *parseFaults({QLatin1String(fault)}, nullptr);
        session.reset(); // ahead of the next one, which has the same driver
        session = std::make_unique<PanelSession>(options, variables);
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

    PanelSnapshot readOnce(const char *words, const char *fault = nullptr)
    {
        open(words, fault);
        EXPECT_TRUE(session->readVariablesOnce());
        session->start();
        return waitUntil([&](const PanelSnapshot &now) { return now.itemsEnded() == variables.size(); });
    }

    void startPolling(const char *words, const char *fault = nullptr)
    {
        open(words, fault);
        session->pollVariables();
        session->start();
    }

    PanelSnapshot poll(int passes, const char *words, const char *fault = nullptr)
    {
        options.loop.passes = passes;
        startPolling(words, fault);
        return waitUntil([](const PanelSnapshot &now) { return now.isEnded; });
    }

    /// Writes UNIT/AREA:ADDRESS=VALUES, and tells what became of each.
    std::string write(const char *words, const char *fault = nullptr)
    {
        open(words, fault);
        QList<WriteItem> items;
        for (const QString &word : list(words)) {
            WriteItem item;
            item.variable = variables.at(items.size());
            QString error;
            item.value = parseValues(item.variable, word.section(QLatin1Char('='), 1), &error).value_or("");
            EXPECT_EQ(error, QString());
            items << item;
        }
        queueWrites(session->driver(), options.block, &items);
        const auto inQueue = std::count_if(items.begin(), items.end(), [](const WriteItem &item) { return item.queued > 0; });
        session->start();
        PanelSnapshot now = waitUntil([&](const PanelSnapshot &n) { return n.itemsEnded() == inQueue; });
        QStringList outcomes;
        for (int i = 0; i < items.size(); ++i)
            outcomes << writeOutcome(items.at(i), now.items[i]).text;
        return outcomes.join(QLatin1String(" | ")).toStdString();
    }

    int registerOf(int unit, int address) { return session->station()->value(unit, Table::HoldingRegisters, address); }
    int coilOf(int unit, int address) { return session->station()->value(unit, Table::Coils, address); }

    PanelOptions options;
    QList<Variable> variables;
    std::unique_ptr<PanelSession> session;
};

const char everyArea[] = "coil:21*3 input:30*2 irbit:40.2*2 hrbit:40.5 ir:50 hr:60*2 ir32:50 hr32:62";
const char everyValue[] = "1 0 0 | 1 0 | 0 1 | 1 | 10050 | 60 61 | 658646851 | 4063295";

TEST_F(SessionTest, EveryAreaIsReadOnceAndPolledAsPlanned)
{
    EXPECT_EQ(valuesOf(readOnce(everyArea)), everyValue);
    const PanelSnapshot now = poll(2, everyArea);
    EXPECT_EQ(valuesOf(now), everyValue);
    EXPECT_EQ(now.passes, 2);
    const QList<QByteArray> sent = session->station()->requests();
    session->stop();
    QList<QByteArray> planned;
    for (const PlannedRequest &request : planRequests(session->driver(), variables, options.block))
        planned << request.frame;
    EXPECT_EQ(sent, planned + planned);
}

TEST_F(SessionTest, UnitsKeepTheirOwnValues)
{
    options.loop.passes = 2;
    open("1/hr:60 2/hr:60 7/coil:9 2/coil:9");
    session->station()->setValue(2, Table::HoldingRegisters, 60, 4711);
    session->station()->setValue(2, Table::Coils, 9, 0);
    session->pollVariables();
    session->start();
    EXPECT_EQ(valuesOf(waitUntil([](const PanelSnapshot &now) { return now.isEnded; })), "60 | 4711 | 1 | 0");
}

TEST_F(SessionTest, WritesReachTheirPlaces)
{
    EXPECT_EQ(write("1/coil:21*2=0,1 2/hr:70*3=1,0xBEEF,-2 2/hrbit:80.15=1 1/hr32:90=0x12345678"),
              "acknowledged | acknowledged | acknowledged | acknowledged");
    EXPECT_EQ(coilOf(1, 21), 0);
    EXPECT_EQ(coilOf(1, 22), 1) << "written as 0xFF00";
    EXPECT_EQ(registerOf(2, 71), 0xBEEF);
    EXPECT_EQ(registerOf(2, 72), 0xFFFE);
    EXPECT_EQ(registerOf(2, 80), 0x8000 | 80) << "the other bits stay";
    EXPECT_EQ(registerOf(1, 90), 0x1234);
    EXPECT_EQ(registerOf(1, 91), 0x5678);

    EXPECT_EQ(write("0/hr:70=5 1/hr:71=6 2/hr:71=6"),
              "sent to all units, none answers a broadcast | acknowledged | acknowledged");
    EXPECT_EQ(registerOf(1, 70), 5);
    EXPECT_EQ(registerOf(2, 70), 5);

    options.block = 3; // which would cut a value in two
    EXPECT_EQ(write("hr32:70*2=0x11112222,0x33334444"), "acknowledged");
    EXPECT_EQ(registerOf(1, 72), 0x3333);
    EXPECT_EQ(registerOf(1, 73), 0x4444);
}

TEST_F(SessionTest, WriteOutcomes)
{
    EXPECT_EQ(write("hr:70=1 hr:71=2 hr:71=3 hr:30*2=1,2", "exception=4@address=30"),
              "acknowledged | replaced by a later write before it was sent | acknowledged; merged with an earlier write | "
              "refused with exception 4: device failure");
    EXPECT_EQ(registerOf(1, 71), 3);

    const QByteArray ones = "coil:0*1030=1" + QByteArray(",1").repeated(1029);
    EXPECT_EQ(write(ones), "1024 of 1030 requests acknowledged; 6 of 1030 requests dropped, the queue is full");

    expectSilence();
    EXPECT_EQ(write("hr:70=1", "silence"), "outcome unknown: no reply; it may or may not have been carried out");
    EXPECT_EQ(session->station()->requests().size(), 1) << "not sent again";
}

TEST_F(SessionTest, AnAddressThatIsMissingFailsItsRequestOnly)
{
    const char refusal[] = "exception=2@address=62";
    EXPECT_EQ(valuesOf(readOnce("hr:60 hr:62 hr:64", refusal)), "60 | exception 2: illegal data address | 64");
    EXPECT_EQ(valuesOf(poll(1, "hr:60 hr:64 hr:300", refusal)),
              "exception 2: illegal data address | exception 2: illegal data address | 300")
        << "a request bridges the gap from 60 to 64";
}

TEST_F(SessionTest, ALateReplyIsNeverShownAsTheValueOfAnother)
{
    expectSilence();
    for (const bool drain : {false, true}) {
        SCOPED_TRACE(drain ? "drain" : "reconnect");
        options.connection.drain = drain;
        const PanelSnapshot now = poll(3, "hr:60 hr:400", "delay=800@address=60,nth=1");
        EXPECT_EQ(valuesOf(now), "60 | 400");
        EXPECT_FALSE(now.values.at(1).hasChanged());
        EXPECT_EQ(now.units.at(1).timeOuts, 1);
        EXPECT_EQ(now.units.at(1).late, drain ? 1 : 0);
        EXPECT_EQ(now.units.at(1).reconnects, drain ? 0 : 1);
    }
}

TEST_F(SessionTest, ADeadUnitIsSwitchedOffAndFoundAgain)
{
    expectSilence();
    options.loop.offAfter = 2;
    options.loop.retryOffMs = 1000;
    startPolling("1/hr:60 2/hr:61", "silence@unit=2");
    PanelSnapshot now = waitUntil([](const PanelSnapshot &n) { return n.units.count(2) && n.units.at(2).isOff; });
    EXPECT_EQ(valuesOf(now), "60 | no reply");
    EXPECT_GT(now.units.at(2).lostPercent(now.elapsedMicroseconds), 0.0);
    session->station()->setFaults({});
    now = waitUntil([](const PanelSnapshot &n) { return n.values.at(1).readAtMs() >= 0; });
    EXPECT_EQ(valuesOf(now), "60 | 61");
    EXPECT_FALSE(now.units.at(2).isOff);
}

TEST_F(SessionTest, AUnitThatIsOffCostsNothing)
{
    expectSilence();
    options.loop.offAfter = 1;
    options.loop.retryOffMs = tooLongMs;
    const PanelSnapshot now = poll(20, "1/hr:60 2/hr:61", "silence@unit=2");
    EXPECT_EQ(now.units.at(2).requests, 1);
    EXPECT_GE(now.units.at(1).good, 19);
}

TEST_F(SessionTest, WhileTheLinkIsDownWritesEndAndPollsGoOnLater)
{
    startPolling("hr:60");
    waitUntil([](const PanelSnapshot &n) { return n.values.at(0).readAtMs() >= 0; });
    session->station()->stopListening();
    waitUntil([](const PanelSnapshot &n) { return n.values.at(0).failure().startsWith(QLatin1String("no link")); });
    QByteArray value("\7\0", 2);
    session->driver().setRegisterData(QString(), 5, QStringLiteral("70"), 1, value, 1, panelHostId, 0);
    PanelSnapshot now = waitUntil([](const PanelSnapshot &n) { return n.itemsEnded() == 1; });
    EXPECT_TRUE(now.items[0].isGivenUp);
    EXPECT_FALSE(now.items[0].mayBeDone) << "it was never sent";
    ASSERT_TRUE(session->station()->listenAgain(nullptr));
    now = waitUntil([](const PanelSnapshot &n) { return n.values.at(0).failure().isEmpty(); });
    EXPECT_GE(now.units.at(1).reconnects, 1);
    EXPECT_EQ(registerOf(1, 70), 70) << "nothing goes out later";
}

TEST_F(SessionTest, WhatASessionLeavesUnsentStaysUnsent)
{
    open("hr:70");
    QByteArray value("\7\0", 2);
    session->driver().setRegisterData(QString(), 5, QStringLiteral("70"), 1, value, 1, panelHostId, 0);
    EXPECT_EQ(valuesOf(poll(3, "hr:60")), "60");
    EXPECT_EQ(session->station()->requests().size(), 3);
    EXPECT_EQ(registerOf(1, 70), 70);
}

TEST_F(SessionTest, RemoteFramesReadBitsAndWrite)
{
    options.connection.remote = true;
    EXPECT_EQ(valuesOf(readOnce("coil:21*5 input:29*3")), "1 0 0 1 0 | 0 1 0");
    EXPECT_EQ(write("hr:70=513 coil:21=0"), "acknowledged | acknowledged");
    EXPECT_EQ(registerOf(1, 70), 513);
    EXPECT_EQ(coilOf(1, 21), 0);
}

} // namespace
