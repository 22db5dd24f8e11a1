// SPDX-License-Identifier: MIT
// The host's connection against the simulated station over TCP: what each fault comes to, and that the next
// request is answered right.

#include "connection.h"

#include "station_thread.h"

#include <gtest/gtest.h>

namespace {

/// A read of one holding register of unit 1, as the driver asks for it.
Protocol readRegister(int address)
{
    Protocol request;
    request.frame = QByteArray::fromHex("000000000006010300000001");
    request.frame[9] = static_cast<char>(address);
    request.frameLength = 12;
    request.replyLength = 11;
    request.var.station = 1;
    return request;
}

/// What a still station holds in a holding register is its address.
QByteArray answerOf(int address)
{
    QByteArray reply = QByteArray::fromHex("0000000000050103020000");
    reply[10] = static_cast<char>(address);
    return reply;
}

class ConnectionTest : public testing::Test
{
protected:
    void start(const char *fault = nullptr)
    {
        StationOptions stationOptions;
        stationOptions.still = true;
        if (fault)
            stationOptions.faults = *parseFaults({QLatin1String(fault)}, nullptr);
        station = std::make_unique<StationThread>(stationOptions);
        ASSERT_TRUE(station->start(nullptr));
        options.host = QStringLiteral("127.0.0.1");
        options.port = station->port();
        connection = std::make_unique<Connection>(options, trace, stop);
    }

    void expectAnswer(int address)
    {
        const Exchange exchange = connection->exchange(readRegister(address));
        EXPECT_EQ(exchange.end, Exchange::Answered) << qPrintable(exchangeText(exchange));
        EXPECT_EQ(exchange.reply.toHex(), answerOf(address).toHex());
        before = exchange.before;
    }

    /// Asks until an answer comes: for as long as the link may be down.
    void expectAnswerAtLast(int address)
    {
        Exchange exchange;
        while (exchange.end != Exchange::Answered)
            exchange = connection->exchange(readRegister(address));
        EXPECT_EQ(exchange.reply, answerOf(address));
    }

    Exchange expectNone(LinkCause cause, ReplyFault fault = ReplyFault::None)
    {
        const Exchange exchange = connection->exchange(readRegister(30));
        EXPECT_EQ(exchange.end, Exchange::NoReply);
        EXPECT_EQ(exchange.cause, cause) << qPrintable(exchangeText(exchange));
        EXPECT_EQ(exchange.fault, fault);
        EXPECT_TRUE(exchange.reply.isEmpty());
        return exchange;
    }

    ConnectionOptions options;
    Trace trace;
    std::atomic<bool> stop{false};
    std::unique_ptr<StationThread> station;
    std::unique_ptr<Connection> connection;
    Aftermath before; ///< what the last answered exchange found
};

struct FaultRow
{
    const char *fault;
    LinkCause cause;
    ReplyFault reason;
};

void PrintTo(const FaultRow &row, std::ostream *out)
{
    *out << row.fault;
}

class ConnectionFault : public ConnectionTest, public testing::WithParamInterface<FaultRow>
{
};

TEST_P(ConnectionFault, CountsAsNoReplyAndTheNextAnswerComesOverANewConnection)
{
    const FaultRow &row = GetParam();
    const bool isWaiting = row.cause == LinkCause::Silent || row.cause == LinkCause::CutOff;
    options.timeoutMs = isWaiting ? 700 : 60000;
    start(row.fault);
    expectAnswer(20);
    expectNone(row.cause, row.reason);
    expectAnswer(40);
    EXPECT_TRUE(before.reconnected);
    EXPECT_EQ(before.unit, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Causes, ConnectionFault,
    testing::Values(FaultRow{"silence@nth=2", LinkCause::Silent, ReplyFault::None},
                    FaultRow{"cut=5@nth=2", LinkCause::CutOff, ReplyFault::None},
                    FaultRow{"close@nth=2", LinkCause::Closed, ReplyFault::None},
                    FaultRow{"reset@nth=2", LinkCause::Closed, ReplyFault::None},
                    FaultRow{"length=300@nth=2", LinkCause::BadHeader, ReplyFault::BadLength},
                    FaultRow{"length=-2@nth=2", LinkCause::HeldBack, ReplyFault::WrongByteCount},
                    FaultRow{"protocol=1@nth=2", LinkCause::BadHeader, ReplyFault::OtherProtocol},
                    FaultRow{"unit=9@nth=2", LinkCause::HeldBack, ReplyFault::OtherUnit},
                    FaultRow{"function=4@nth=2", LinkCause::HeldBack, ReplyFault::OtherFunction},
                    FaultRow{"transaction=7@nth=2", LinkCause::HeldBack, ReplyFault::OtherTransaction}));

TEST_F(ConnectionTest, AReplySentTwiceDoesNotAnswerTheNextRequest)
{
    start("double@nth=1");
    expectAnswer(20);
    expectAnswer(30);
    EXPECT_EQ(before.lateReplies, 1);
    EXPECT_TRUE(before.reconnected);
}

TEST_F(ConnectionTest, AnExceptionIsAnAnswerAndComesAtOnce)
{
    options.timeoutMs = 600000; // longer than a test may take
    start("exception=2@address=30");
    const Exchange exchange = connection->exchange(readRegister(30));
    EXPECT_EQ(exchange.end, Exchange::Answered);
    EXPECT_EQ(exceptionCode(exchange.reply), 2);
    EXPECT_EQ(exchangeText(exchange), QStringLiteral("exception 2: illegal data address"));
}

TEST_F(ConnectionTest, ALateReplyIsCountedAndDroppedWithItsConnection)
{
    options.timeoutMs = 400;
    options.gapMs = 2000; // the late reply comes within it
    start("delay=800@nth=1");
    expectNone(LinkCause::Silent);
    expectAnswer(40);
    EXPECT_EQ(before.lateReplies, 1);
    EXPECT_TRUE(before.reconnected);
}

TEST_F(ConnectionTest, DrainingThrowsTheLateReplyAwayAndKeepsTheConnection)
{
    options.timeoutMs = 1500;
    options.drain = true;
    start("delay=1700@nth=1");
    expectNone(LinkCause::Silent);
    expectAnswer(40);
    EXPECT_EQ(before.lateReplies, 1);
    EXPECT_FALSE(before.reconnected);
    EXPECT_GT(before.microseconds, 0);
}

TEST_F(ConnectionTest, RefusedBacksOffAndTriesAgain)
{
    options.backOff = {1, 1};
    start();
    station->stopListening();
    EXPECT_FALSE(connection->open());
    EXPECT_EQ(connection->cause(), LinkCause::Refused);
    EXPECT_EQ(connection->exchange(readRegister(20)).end, Exchange::NotSent);
    ASSERT_TRUE(station->listenAgain(nullptr));
    expectAnswerAtLast(20);
}

TEST_F(ConnectionTest, WhileBackingOffNothingIsTried)
{
    options.backOff = {3600000, 3600000};
    start();
    station->stopListening();
    EXPECT_FALSE(connection->open());
    ASSERT_TRUE(station->listenAgain(nullptr));
    EXPECT_EQ(connection->exchange(readRegister(20)).end, Exchange::NotSent);
    EXPECT_TRUE(station->requests().isEmpty());
}

TEST_F(ConnectionTest, ARestartedStationIsFoundAgain)
{
    options.backOff = {1, 1};
    start();
    expectAnswer(20);
    station->stopListening();
    EXPECT_NE(connection->exchange(readRegister(30)).end, Exchange::Answered);
    ASSERT_TRUE(station->listenAgain(nullptr));
    expectAnswerAtLast(40);
}

TEST_F(ConnectionTest, NobodyIsWaitedForAfterABroadcast)
{
    options.timeoutMs = 600000; // longer than a test may take
    start();
    Protocol request = readRegister(20);
    request.frame = QByteArray::fromHex("000000000006000600140007");
    request.replyLength = 0;
    request.var.station = 0;
    EXPECT_EQ(connection->exchange(request).end, Exchange::Sent);
    Exchange exchange = connection->exchange(readRegister(20));
    EXPECT_EQ(exchange.reply, answerOf(7));
}

} // namespace
