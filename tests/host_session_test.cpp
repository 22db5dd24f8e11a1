// SPDX-License-Identifier: MIT
// The whole host, driver loaded by its path, against the simulated station over TCP.

#include "../host/explain/exception_text.h"
#include "../host/explain/plan.h"
#include "session_fixture.h"

#include <tuple>

namespace {

using Table = QModbusDataUnit;

/// What is shown for each variable: its value, or why there is none.
std::string valuesOf(const PanelSnapshot &now)
{
    QStringList texts;
    for (const ValueState &value : now.values) {
        const bool isGood = value.readAtMs() >= 0 && value.failure().isEmpty();
        texts << (isGood ? valueText(value.variable(), value.value()) : value.failure());
    }
    return texts.join(QLatin1String(" | ")).toStdString();
}

/// What went wrong at any unit, once for each time.
std::string troubleOf(const PanelSnapshot &now)
{
    QStringList trouble;
    const auto times = [](int count, const QString &what) { return QVector<QString>(count, what).toList(); };
    for (const auto &[number, unit] : now.units) {
        trouble << times(unit.timeOuts, QStringLiteral("timed out")) << times(unit.closed, QStringLiteral("closed"));
        for (const auto &[fault, count] : unit.heldBack)
            trouble << times(count, replyFaultText(fault));
        for (const auto &[code, count] : unit.exceptions)
            trouble << times(count, exceptionName(code));
        trouble << times(unit.late, QStringLiteral("late")) << times(unit.reconnects, QStringLiteral("reconnected"));
    }
    return trouble.join(QLatin1String(", ")).toStdString();
}

TEST_F(SessionTest, EveryAreaIsReadOnceAndPolledAsPlanned)
{
    const char everyArea[] = "coil:21*3 input:30*2 irbit:40.2*2 hrbit:40.5 ir:50 hr:60*2 ir32:50 hr32:62";
    const char everyValue[] = "1 0 0 | 1 0 | 0 1 | 1 | 10050 | 60 61 | 658646851 | 4063295";
    EXPECT_EQ(valuesOf(readOnce(everyArea)), everyValue);
    const PanelSnapshot now = poll(2, everyArea);
    EXPECT_EQ(valuesOf(now), everyValue);
    EXPECT_EQ(now.passes, 2);
    const QList<QByteArray> sent = session->station()->requests();
    session->stop();
    const QList<PlannedRequest> planned = planRequests(session->driver(), variables(everyArea), options.block);
    ASSERT_EQ(sent.size(), 2 * planned.size());
    for (int i = 0; i < sent.size(); ++i)
        EXPECT_EQ(sent[i].mid(2), planned[i % planned.size()].frame.mid(2)) << "behind the host's transaction number";
}

TEST_F(SessionTest, ABroadcastReachesAllUnitsAndNoBlockCutsAValue)
{
    EXPECT_EQ(write("0/hr:70=5 1/hr:71=6 2/hr:71=6"),
              "sent to all units, none answers a broadcast | acknowledged | acknowledged");
    EXPECT_EQ(registerOf(1, 70), 5);
    EXPECT_EQ(registerOf(2, 70), 5);

    options.block = 3; // which would cut a value in two
    EXPECT_EQ(write("hr32:70*2=0x11112222,0x33334444"), "acknowledged");
    EXPECT_EQ(registerOf(1, 72), 0x3333);
    EXPECT_EQ(registerOf(1, 73), 0x4444);
}

TEST_F(SessionTest, AWriteTellsHowMuchOfItWasDone)
{
    const QByteArray ones = "coil:0*1030=1" + QByteArray(",1").repeated(1029);
    EXPECT_EQ(write(ones), "1024 of 1030 requests acknowledged; 6 of 1030 requests dropped, the queue is full");
    options.block = 2;
    EXPECT_EQ(write("hr:70*5=1,2,3,4,5 hrbit:80.1=1", "exception=2@address=72 close@function=3"),
              "1 of 3 requests acknowledged, then refused with exception 2: illegal data address"
              " | not done: connection closed by the peer");
}

struct SpoiltReply
{
    const char *fault, *trouble;
    WriteOutcome::End ofWrite = WriteOutcome::Unknown;
    AfterTimeout policy = AfterTimeout::Numbers;
};

const SpoiltReply spoiltReplies[] = {
    {"silence", "timed out"},
    {"silence", "timed out, reconnected", WriteOutcome::Unknown, AfterTimeout::Reconnect},
    {"cut=5", "timed out, reconnected"},
    {"delay=LATE", "timed out, late"},
    {"delay=LATE", "timed out, late", WriteOutcome::Unknown, AfterTimeout::Drain},
    {"glue", "timed out, late"},
    {"glue", "timed out, reconnected", WriteOutcome::Unknown, AfterTimeout::Drain},
    {"double", "late", WriteOutcome::Done},
    {"close", "closed, reconnected"},
    {"reset", "closed, reconnected"},
    {"unit=9", "other unit"},
    {"function=2", "other function"},
    {"transaction=7", "other transaction id, late"},
    {"protocol=1", "other protocol id, reconnected"},
    {"length=300", "bad length field, reconnected"},
    {"length=-2", "wrong byte count, reconnected"},
    {"exception=2", "illegal data address", WriteOutcome::Failed},
    {"exception=5", "acknowledged, still busy"},
};

// What is spoilt, the number of its request, and which write that belongs to.
const std::tuple<const char *, int, int> steps[] = {
    {"a write", 2, 1}, {"the read half of a bit write", 3, 2}, {"its write half", 4, 2}, {"a poll", 9, -1}};

class SpoiltSessionTest : public SessionTest
{
protected:
    /// Polls for three passes, and writes in the first. The values at the end, what went wrong, and how each write ended.
    /// Each place holds a value of its own, and all replies to reads are of one length: the driver would take any for any.
    std::string pollAndWrite(const QByteArray &fault)
    {
        open("1/hr:60 2/hr:60 1/hr:400 2/hr:400", fault);
        for (const int address : {60, 400})
            session->station()->setValue(2, Table::HoldingRegisters, address, static_cast<quint16>(1000 + address));
        const QList<WriteItem> items = queue("1/hr:70=5 2/hr:71=6 2/hrbit:80.15=1");
        session->pollVariables();
        session->start();
        PanelSnapshot now = waitForEnd();
        for (const ValueState &value : now.values) {
            const int held = registerOf(value.variable().unit, value.variable().address);
            EXPECT_TRUE(!value.failure().isEmpty() || valueText(value.variable(), value.value()) == QString::number(held))
                << held;
            EXPECT_FALSE(value.hasChanged()) << "another value was shown in the second pass";
        }
        std::string found = valuesOf(now) + "; " + troubleOf(now);
        const bool isWritten[] = {registerOf(1, 70) == 5, registerOf(2, 71) == 6, registerOf(2, 80) == (0x8000 | 80)};
        for (int i = 0; i < items.size(); ++i) {
            const WriteOutcome outcome = writeOutcome(items.at(i), now.items[i]);
            EXPECT_TRUE(outcome.end != WriteOutcome::Done || isWritten[i]) << i << qPrintable(outcome.text);
            found += " " + std::to_string(outcome.end);
        }
        return found;
    }
};

TEST_F(SpoiltSessionTest, NothingForeignGetsThroughWhicheverReplyIsSpoilt)
{
    options.loop.passes = 3;
    for (const SpoiltReply &row : spoiltReplies) {
        options.connection.afterTimeout = row.policy;
        for (const auto &[what, nth, spoiltItem] : steps) {
            SCOPED_TRACE(testing::Message() << row.fault << " at " << what << ", policy " << static_cast<int>(row.policy));
            const auto spoilt = nth != 3 || row.ofWrite == WriteOutcome::Done ? row.ofWrite : WriteOutcome::Failed;
            std::string expected = std::string("60 | 1060 | 400 | 1400; ") + row.trouble;
            for (int item = 0; item < 3; ++item)
                expected += item == spoiltItem ? " " + std::to_string(spoilt) : " 0";
            std::string found;
            for (const int timeoutMs : {60, 600, 6000}) { // on a busy machine a right reply can come too late
                options.connection.timeoutMs = timeoutMs;
                const QByteArray fault = QByteArray(row.fault).replace("LATE", QByteArray::number(timeoutMs * 3 / 2));
                found = pollAndWrite(fault + "@nth=" + QByteArray::number(nth));
                if (found == expected)
                    break;
            }
            EXPECT_EQ(found, expected);
        }
    }
}

TEST_F(SessionTest, AReadIsRetriedWaitsForTheLinkOrSaysWhyItFailed)
{
    // Retries, patience with a link that is backing off, variables, faults, what is shown.
    const std::tuple<int, int, const char *, const char *, const char *> rows[] = {
        {0, 0, "hr:61 hr:60*2", "exception=2@nth=1", "exception 2: illegal data address | 60 61"},
        {0, 0, "1/hr:20", "unit=9", "unit 9 answered a request to unit 1; try 9/hr:20"},
        {0, 0, "1/coil:8", "unit=255",
         "unit 255 answered a request to unit 1; try 255/coil:8 (unit 255 is the device that has the connection, not one behind "
         "it)"},
        {1, 0, "hr:60 hr:70 hr:80", "exception=6@every=2", "60 | 70 | 80"}, // each request has a retry of its own
        {5, 0, "hr:60 hr:70", "refuse=600@nth=1", "connection closed by the peer | no link: connection refused"},
        {1, tooLongMs, "hr:60 hr:70", "refuse=1@nth=1", "60 | 70"},
    };
    options.connection.backOff = {100, 100, 0, tooLongMs};
    for (const auto &[retries, patienceMs, texts, faults, values] : rows) {
        options.retries = retries;
        options.connection.patienceMs = patienceMs;
        EXPECT_EQ(valuesOf(readOnce(texts, faults)), values);
    }
}

TEST_F(SessionTest, AVariableIsGoodOnlyWhenAllItsPartsAre)
{
    options.block = 2;
    EXPECT_EQ(valuesOf(poll(3, "hr:60*6", "exception=6@address=62")), "exception 6: device busy") << "not its last part";
    options.connection.timeoutMs = 100;
    const ValueState value = poll(1, "hr:60*4", "behind@address=62").values[0];
    EXPECT_EQ(value.readAtMs(), -1) << "the previous reply is not the answer";
    EXPECT_EQ(value.failure(), QStringLiteral("no reply"));
}

TEST_F(SessionTest, AnExceptionMayLeaveAWriteInDoubt)
{
    options.retries = 1;
    const std::tuple<int, const char *, int> rows[] = {
        {1, "refused", 2},         {4, "outcome unknown", 2}, {5, "outcome unknown", 1}, {6, "refused", 2},
        {9, "outcome unknown", 2}, {10, "refused", 2},        {11, "outcome unknown", 2}};
    for (const auto &[code, outcome, sent] : rows) {
        EXPECT_EQ(write("hr:70=1", ("exception=" + std::to_string(code)).c_str()).find(outcome), 0) << code;
        EXPECT_EQ(session->station()->requests().size(), sent) << code;
    }
}

TEST_F(SessionTest, ADeadUnitIsSwitchedOffAndFoundAgain)
{
    options.connection.timeoutMs = 100;
    options.loop.offAfter = 2;
    options.loop.retryOffMs = 200;
    startPolling("1/hr:60 2/hr:61", "silence@unit=1");
    const auto waitFor = [this](const char *values, bool isOff, int requests) {
        const auto now = waitUntil([&](const PanelSnapshot &n) {
            return valuesOf(n) == values && n.units.at(1).isOff == isOff && n.units.at(2).requests >= requests;
        });
        EXPECT_EQ(valuesOf(now), values);
        EXPECT_GE(2 * now.passes, now.units.at(2).requests) << "a pass needs the request that opened the first one";
    };
    waitFor("no reply | 61", true, 50);
    session->station()->setFaults({});
    waitFor("60 | 61", false, 0);
}

TEST_F(SessionTest, APeerThatIsSilentForLongIsConnectedAnew)
{
    options.connection.timeoutMs = 40;
    options.loop.offAfter = 0;
    startPolling("hr:60");
    waitUntil([](const PanelSnapshot &n) { return n.values.at(0).readAtMs() >= 0; });
    session->station()->setFaults(*parseFaults({QStringLiteral("silence")}, nullptr));
    const PanelSnapshot now = waitUntil([](const PanelSnapshot &n) { return n.units.at(1).reconnects > 0; });
    EXPECT_EQ(now.units.at(1).timeOuts / 10, 1) << now.units.at(1).timeOuts;
}

TEST_F(SessionTest, WhileTheLinkIsDownWritesEndAndPollsGoOnLater)
{
    startPolling("hr:60");
    waitUntil([](const PanelSnapshot &n) { return n.values.at(0).readAtMs() >= 0; });
    session->station()->stopListening();
    waitUntil([](const PanelSnapshot &n) { return n.values.at(0).failure().startsWith(QLatin1String("no link")); });
    queue("hr:70=7");
    PanelSnapshot now = waitUntil([](const PanelSnapshot &n) { return n.itemsEnded() == 1; });
    EXPECT_TRUE(now.items[0].isGivenUp);
    EXPECT_FALSE(now.items[0].mayBeDone) << "it was never sent";
    ASSERT_TRUE(session->station()->listenAgain(nullptr));
    now = waitUntil([](const PanelSnapshot &n) { return n.values.at(0).failure().isEmpty(); });
    EXPECT_GE(now.units.at(1).reconnects, 1);
    EXPECT_EQ(registerOf(1, 70), 70) << "nothing goes out later";
}

TEST_F(SessionTest, AStationThatIsNotUpYetIsWaitedForWhenAsked)
{
    options.loop.waitsForLink = true;
    open("hr:60");
    session->station()->stopListening();
    session->pollVariables();
    session->start();
    EXPECT_EQ(waitUntil([](const PanelSnapshot &n) { return n.passes == 2; }).linkCause, LinkCause::Refused);
    ASSERT_TRUE(session->station()->listenAgain(nullptr));
    EXPECT_EQ(valuesOf(waitUntil([](const PanelSnapshot &n) { return n.values[0].readAtMs() >= 0; })), "60");
}

TEST_F(SessionTest, WhileBackingOffNothingIsTried)
{
    options.connection.backOff = {tooLongMs, tooLongMs};
    startPolling("hr:60");
    waitUntil([](const PanelSnapshot &n) { return n.passes > 0; });
    session->station()->stopListening();
    const int passes = waitUntil([](const PanelSnapshot &n) { return n.link == LinkState::BackingOff; }).passes;
    ASSERT_TRUE(session->station()->listenAgain(nullptr));
    const PanelSnapshot now = waitUntil([passes](const PanelSnapshot &n) { return n.passes > passes + 3; });
    EXPECT_EQ(valuesOf(now), "no link: connection refused");
    EXPECT_EQ(now.units.at(1).reconnects, 0);
}

TEST_F(SessionTest, WhatASessionLeavesUnsentStaysUnsent)
{
    open("hr:70");
    EXPECT_EQ(writeOutcome(queue("hr:70=7").at(0), {}).text, QStringLiteral("not done: stopped before it was sent"));
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
    EXPECT_EQ(session->station()->value(1, Table::Coils, 21), 0);
}

} // namespace
