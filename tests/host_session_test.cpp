// SPDX-License-Identifier: MIT
// The whole host, driver loaded by its path, against the simulated station over TCP.

#include "panel_session.h"
#include "value_text.h"
#include "write_outcome.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

Variable variable(const QString &text)
{
    QString error;
    const std::optional<Variable> parsed = parseVariable(text, &error);
    EXPECT_TRUE(parsed) << qPrintable(error);
    return parsed.value_or(Variable());
}

class SessionTest : public testing::Test
{
protected:
    SessionTest()
    {
        options.driverPath = QStringLiteral(DRIVER_PATH);
        options.connection.timeoutMs = 60000;
        options.connection.backOff = {1, 1};
    }

    void open(const QStringList &texts, const char *fault = nullptr)
    {
        QList<Variable> variables;
        for (const QString &text : texts)
            variables << variable(text.section(QLatin1Char('='), 0, 0));
        if (fault)
            options.faults = *parseFaults({QLatin1String(fault)}, nullptr);
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

    PanelSnapshot readOnce(const QStringList &texts, const char *fault = nullptr)
    {
        open(texts, fault);
        EXPECT_TRUE(session->readVariablesOnce());
        session->start();
        return waitUntil([&](const PanelSnapshot &now) { return now.itemsEnded() == texts.size(); });
    }

    PanelSnapshot pollPasses(int passes)
    {
        options.loop.passes = passes;
        session->pollVariables();
        session->start();
        return waitUntil([](const PanelSnapshot &now) { return now.isEnded; });
    }

    /// Writes UNIT/AREA:ADDRESS=VALUES, and tells what became of each.
    QStringList write(const QStringList &texts, const char *fault = nullptr)
    {
        open(texts, fault);
        QList<WriteItem> items;
        for (const QString &text : texts) {
            WriteItem item;
            item.variable = variable(text.section(QLatin1Char('='), 0, 0));
            QString error;
            item.value = parseValues(item.variable, text.section(QLatin1Char('='), 1), &error).value_or("");
            EXPECT_EQ(error, QString());
            items << item;
        }
        queueWrites(session->driver(), options.block, &items);
        int inQueue = 0;
        for (const WriteItem &item : items)
            inQueue += item.queued > 0 ? 1 : 0;
        session->start();
        PanelSnapshot now = waitUntil([&](const PanelSnapshot &n) { return n.itemsEnded() == inQueue; });
        QStringList outcomes;
        for (int i = 0; i < items.size(); ++i)
            outcomes << writeOutcome(items.at(i), now.items[i]).text;
        return outcomes;
    }

    static std::string valueOf(const PanelSnapshot &now, std::size_t index)
    {
        const ValueState &value = now.values.at(index);
        if (value.readAtMs() < 0 || !value.failure().isEmpty())
            return value.ageText(0, 0).toStdString();
        return valueText(value.variable(), value.value(), ValueFormat::Decimal).toStdString();
    }

    static std::string textOf(const ValueState &value) { return value.failure().toStdString(); }

    PanelOptions options;
    std::unique_ptr<PanelSession> session;
};

using Table = QModbusDataUnit;

TEST_F(SessionTest, EveryAreaIsReadOnceAndPolled)
{
    const QStringList areas = {QStringLiteral("coil:21*3"),    QStringLiteral("input:30*2"),
                               QStringLiteral("irbit:40.2*2"), QStringLiteral("hrbit:40.5"),
                               QStringLiteral("ir:50"),        QStringLiteral("hr:60*2"),
                               QStringLiteral("ir32:50"),      QStringLiteral("hr32:62")};
    const char *const values[] = {"1 0 0", "1 0", "0 1", "1", "10050", "60 61", "658646851", "4063295"};
    PanelSnapshot now = readOnce(areas);
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(valueOf(now, i), values[i]) << qPrintable(areas.at(int(i)));
    session.reset();
    options.loop.passes = 2;
    open(areas);
    now = pollPasses(2);
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(valueOf(now, i), values[i]) << qPrintable(areas.at(int(i)));
    EXPECT_EQ(now.passes, 2);
}

TEST_F(SessionTest, UnitsKeepTheirOwnValues)
{
    options.loop.passes = 2;
    open({QStringLiteral("1/hr:60"), QStringLiteral("2/hr:60"), QStringLiteral("7/coil:9"),
          QStringLiteral("2/coil:9")});
    session->station()->setValue(2, Table::HoldingRegisters, 60, 4711);
    session->station()->setValue(2, Table::Coils, 9, 0);
    const PanelSnapshot now = pollPasses(2);
    EXPECT_EQ(valueOf(now, 0), "60");
    EXPECT_EQ(valueOf(now, 1), "4711");
    EXPECT_EQ(valueOf(now, 2), "1");
    EXPECT_EQ(valueOf(now, 3), "0");
}

TEST_F(SessionTest, WritesReachTheirPlaces)
{
    EXPECT_EQ(write({QStringLiteral("1/coil:21*2=0,1"), QStringLiteral("2/hr:70*3=1,0xBEEF,-2"),
                     QStringLiteral("2/hrbit:80.15=1"), QStringLiteral("1/hr32:90=0x12345678")}),
              QStringList({QStringLiteral("acknowledged"), QStringLiteral("acknowledged"),
                           QStringLiteral("acknowledged"), QStringLiteral("acknowledged")}));
    const StationThread &station = *session->station();
    EXPECT_EQ(station.value(1, Table::Coils, 21), 0);
    EXPECT_NE(station.value(1, Table::Coils, 22), 0);
    EXPECT_EQ(station.value(2, Table::HoldingRegisters, 71), 0xBEEF);
    EXPECT_EQ(station.value(2, Table::HoldingRegisters, 72), 0xFFFE);
    EXPECT_EQ(station.value(2, Table::HoldingRegisters, 80), 0x8000 | 80) << "the other bits stay";
    EXPECT_EQ(station.value(1, Table::HoldingRegisters, 90), 0x1234);
    EXPECT_EQ(station.value(1, Table::HoldingRegisters, 91), 0x5678);
}

TEST_F(SessionTest, ABroadcastReachesEveryUnitAndClaimsNoAcknowledgement)
{
    const QStringList outcomes =
        write({QStringLiteral("0/hr:70=5"), QStringLiteral("1/hr:71=6"), QStringLiteral("2/hr:71=6")});
    EXPECT_EQ(outcomes.first(), QStringLiteral("sent to all units, none answers a broadcast"));
    EXPECT_EQ(session->station()->value(1, Table::HoldingRegisters, 70), 5);
    EXPECT_EQ(session->station()->value(2, Table::HoldingRegisters, 70), 5);
}

TEST_F(SessionTest, WriteOutcomes)
{
    const QStringList outcomes = write({QStringLiteral("hr:70=1"), QStringLiteral("hr:71=2"),
                                        QStringLiteral("hr:71=3"), QStringLiteral("hr:30*2=1,2")},
                                       "exception=4@address=30");
    EXPECT_EQ(outcomes, QStringList({QStringLiteral("acknowledged"),
                                     QStringLiteral("replaced by a later write before it was sent"),
                                     QStringLiteral("acknowledged; merged with an earlier write"),
                                     QStringLiteral("refused with exception 4: device failure")}));
    EXPECT_EQ(session->station()->value(1, Table::HoldingRegisters, 71), 3);
}

TEST_F(SessionTest, AWriteWithoutReplyIsSentOnceAndItsOutcomeIsUnknown)
{
    options.connection.timeoutMs = 500;
    options.retries = 0;
    EXPECT_EQ(
        write({QStringLiteral("hr:70=1")}, "silence"),
        QStringList(QStringLiteral("outcome unknown: no reply; it may or may not have been carried out")));
    EXPECT_EQ(session->station()->requests().size(), 1);
}

TEST_F(SessionTest, AFullQueueIsReported)
{
    QStringList ones;
    for (int i = 0; i < 1030; ++i)
        ones << QStringLiteral("1");
    EXPECT_EQ(write({QStringLiteral("coil:0*1030=") + ones.join(QLatin1Char(','))}),
              QStringList(QStringLiteral(
                  "1024 of 1030 requests acknowledged; 6 of 1030 requests dropped, the queue is full")));
}

TEST_F(SessionTest, AnOddBlockDoesNotCut32BitValues)
{
    options.block = 3;
    EXPECT_EQ(write({QStringLiteral("hr32:70*2=0x11112222,0x33334444")}),
              QStringList(QStringLiteral("acknowledged")));
    EXPECT_EQ(session->station()->value(1, Table::HoldingRegisters, 72), 0x3333);
    EXPECT_EQ(session->station()->value(1, Table::HoldingRegisters, 73), 0x4444);
}

TEST_F(SessionTest, OneReadThatFailsTakesNoOtherWithIt)
{
    const PanelSnapshot now =
        readOnce({QStringLiteral("hr:60"), QStringLiteral("hr:62"), QStringLiteral("hr:64")},
                 "exception=2@address=62");
    EXPECT_EQ(valueOf(now, 0), "60");
    EXPECT_EQ(textOf(now.values.at(1)), "exception 2: illegal data address");
    EXPECT_EQ(valueOf(now, 2), "64");
}

TEST_F(SessionTest, AGapThatCannotBeReadFailsTheWholeGroup)
{
    options.loop.passes = 1;
    open({QStringLiteral("hr:60"), QStringLiteral("hr:64"), QStringLiteral("hr:300")},
         "exception=2@address=62");
    const PanelSnapshot now = pollPasses(1);
    EXPECT_EQ(textOf(now.values.at(0)), "exception 2: illegal data address");
    EXPECT_EQ(textOf(now.values.at(1)), "exception 2: illegal data address");
    EXPECT_EQ(valueOf(now, 2), "300");
}

class LateReply : public SessionTest, public testing::WithParamInterface<bool>
{
};

TEST_P(LateReply, IsNeverShownAsTheValueOfAnother)
{
    options.connection.timeoutMs = 500;
    options.connection.drain = GetParam();
    options.retries = 0;
    options.loop.passes = 3;
    open({QStringLiteral("hr:60"), QStringLiteral("hr:400")}, "delay=800@address=60,nth=1");
    const PanelSnapshot now = pollPasses(3);
    EXPECT_EQ(valueOf(now, 0), "60");
    EXPECT_EQ(valueOf(now, 1), "400");
    EXPECT_FALSE(now.values.at(1).hasChanged());
    EXPECT_EQ(now.units.at(1).timeOuts, 1);
}

INSTANTIATE_TEST_SUITE_P(Policies, LateReply, testing::Bool());

TEST_F(SessionTest, ADeadUnitIsSwitchedOffAndFoundAgain)
{
    options.connection.timeoutMs = 500;
    options.retries = 0;
    options.loop.offAfter = 2;
    options.loop.retryOffMs = 1000;
    open({QStringLiteral("1/hr:60"), QStringLiteral("2/hr:61")}, "silence@unit=2");
    session->pollVariables();
    session->start();
    PanelSnapshot now = waitUntil([](const PanelSnapshot &n) {
        const auto unit = n.units.find(2);
        return unit != n.units.end() && unit->second.isOff;
    });
    EXPECT_EQ(textOf(now.values.at(1)), "no reply");
    EXPECT_GT(now.units.at(2).lostPercent(now.elapsedMicroseconds), 0.0);
    session->station()->setFaults({});
    now = waitUntil([](const PanelSnapshot &n) { return n.values.at(1).readAtMs() >= 0; });
    EXPECT_EQ(valueOf(now, 1), "61");
    EXPECT_FALSE(now.units.at(2).isOff);
}

TEST_F(SessionTest, AUnitThatIsOffCostsNothing)
{
    options.connection.timeoutMs = 500;
    options.retries = 0;
    options.loop.offAfter = 1;
    options.loop.retryOffMs = 3600000;
    options.loop.passes = 20;
    open({QStringLiteral("1/hr:60"), QStringLiteral("2/hr:61")}, "silence@unit=2");
    const PanelSnapshot now = pollPasses(20);
    EXPECT_EQ(now.units.at(2).requests, 1);
    EXPECT_GE(now.units.at(1).good, 19);
}

TEST_F(SessionTest, WhileTheLinkIsDownWritesEndAndPollsGoOnLater)
{
    open({QStringLiteral("hr:60")});
    session->pollVariables();
    session->start();
    waitUntil([](const PanelSnapshot &n) { return n.values.at(0).readAtMs() >= 0; });
    session->station()->stopListening();
    waitUntil(
        [](const PanelSnapshot &n) { return n.values.at(0).failure().startsWith(QLatin1String("no link")); });
    QByteArray value("\7\0", 2);
    session->driver().setRegisterData(QString(), 5, QStringLiteral("70"), 1, value, 1, panelHostId, 0);
    PanelSnapshot now = waitUntil([](const PanelSnapshot &n) { return n.itemsEnded() == 1; });
    EXPECT_TRUE(now.items[0].isGivenUp);
    EXPECT_FALSE(now.items[0].mayBeDone) << "it was never sent";
    ASSERT_TRUE(session->station()->listenAgain(nullptr));
    now = waitUntil([](const PanelSnapshot &n) { return n.values.at(0).failure().isEmpty(); });
    EXPECT_GE(now.units.at(1).reconnects, 1);
    EXPECT_EQ(session->station()->value(1, Table::HoldingRegisters, 70), 70) << "nothing goes out later";
}

TEST_F(SessionTest, RemoteFramesReadBitsAndWrite)
{
    options.connection.remote = true;
    const PanelSnapshot now = readOnce({QStringLiteral("coil:21*5"), QStringLiteral("input:29*3")});
    EXPECT_EQ(valueOf(now, 0), "1 0 0 1 0");
    EXPECT_EQ(valueOf(now, 1), "0 1 0");
    session.reset();
    EXPECT_EQ(write({QStringLiteral("hr:70=513"), QStringLiteral("coil:21=0")}),
              QStringList({QStringLiteral("acknowledged"), QStringLiteral("acknowledged")}));
    EXPECT_EQ(session->station()->value(1, Table::HoldingRegisters, 70), 513);
    EXPECT_EQ(session->station()->value(1, Table::Coils, 21), 0);
}

TEST_F(SessionTest, AFirstConnectionThatFailsEndsTheLoop)
{
    StationThread gone{StationOptions()};
    ASSERT_TRUE(gone.start(nullptr));
    gone.stopListening();
    options.connection.host = QStringLiteral("127.0.0.1");
    options.connection.port = gone.port();
    const PanelSnapshot now = readOnce({QStringLiteral("hr:60")});
    EXPECT_TRUE(now.isEnded);
    EXPECT_EQ(now.linkCause, LinkCause::Refused);
}

TEST(DriverLibrary, SaysWhatIsMissing)
{
    QString error;
    EXPECT_FALSE(loadDriver(QStringLiteral("/nowhere/libdriver.so.1"), &error));
    EXPECT_TRUE(error.contains(QLatin1String("/nowhere/libdriver.so.1"))) << qPrintable(error);
    EXPECT_FALSE(loadDriver(QStringLiteral("libm.so.6"), &error));
    EXPECT_TRUE(error.contains(QLatin1String("SetComInfo"))) << qPrintable(error);
}

} // namespace
