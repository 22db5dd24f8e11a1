// SPDX-License-Identifier: MIT
// The host's connection against the simulated station over TCP: what each fault comes to, and that the next request is
// answered right.

#include "connection.h"

#include "station_thread.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

const int tooLongMs = 600000; // for a test: nobody waits for it

/// A read of one holding register of unit 1, as the driver asks for it.
Protocol readRegister(int address)
{
    Protocol request;
    request.frame = QByteArray::fromHex("0000 0000 0006 01 03 0000 0001");
    request.frame[9] = static_cast<char>(address);
    request.frameLength = 12;
    request.replyLength = 11;
    request.var.station = 1;
    return request;
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
        connection.reset();
        station = std::make_unique<StationThread>(stationOptions);
        ASSERT_TRUE(station->start(nullptr));
        options.host = QStringLiteral("127.0.0.1");
        options.port = station->port();
        connection = std::make_unique<Connection>(options, trace, stop);
    }

    Exchange ask(int address) { return connection->exchange(readRegister(address)); }

    /// The register holds its address. What was found before the request.
    Aftermath expectAnswer(int address)
    {
        QByteArray expected = QByteArray::fromHex("0000 0000 0005 01 03 02 0000");
        expected[10] = static_cast<char>(address);
        const Exchange exchange = ask(address);
        EXPECT_EQ(exchange.reply.toHex(), expected.toHex()) << qPrintable(exchangeText(exchange));
        EXPECT_EQ(exchange.end, Exchange::Answered);
        return exchange.before;
    }

    void expectNone(LinkCause cause, ReplyFault fault = ReplyFault::None)
    {
        const Exchange exchange = ask(30);
        EXPECT_EQ(exchange.end, Exchange::NoReply);
        EXPECT_EQ(exchange.cause, cause) << qPrintable(exchangeText(exchange));
        EXPECT_EQ(exchange.fault, fault);
        EXPECT_TRUE(exchange.reply.isEmpty());
    }

    ConnectionOptions options;
    Trace trace;
    std::atomic<bool> stop{false};
    std::unique_ptr<StationThread> station;
    std::unique_ptr<Connection> connection;
};

TEST_F(ConnectionTest, AFaultCountsAsNoReplyAndTheNextAnswerComesOverANewConnection)
{
    using Row = std::tuple<const char *, LinkCause, ReplyFault>;
    const Row rows[] = {
        {"silence@nth=2", LinkCause::Silent, ReplyFault::None},
        {"cut=5@nth=2", LinkCause::CutOff, ReplyFault::None},
        {"close@nth=2", LinkCause::Closed, ReplyFault::None},
        {"reset@nth=2", LinkCause::Closed, ReplyFault::None},
        {"length=300@nth=2", LinkCause::BadHeader, ReplyFault::BadLength},
        {"length=-2@nth=2", LinkCause::HeldBack, ReplyFault::WrongByteCount},
        {"protocol=1@nth=2", LinkCause::BadHeader, ReplyFault::OtherProtocol},
        {"unit=9@nth=2", LinkCause::HeldBack, ReplyFault::OtherUnit},
        {"function=4@nth=2", LinkCause::HeldBack, ReplyFault::OtherFunction},
        {"transaction=7@nth=2", LinkCause::HeldBack, ReplyFault::OtherTransaction},
    };
    for (const auto &[fault, cause, reason] : rows) {
        SCOPED_TRACE(fault);
        const bool isWaiting = cause == LinkCause::Silent || cause == LinkCause::CutOff;
        options.timeoutMs = isWaiting ? 700 : tooLongMs;
        start(fault);
        expectAnswer(20);
        expectNone(cause, reason);
        const Aftermath before = expectAnswer(40);
        EXPECT_TRUE(before.reconnected);
        EXPECT_EQ(before.unit, 1);
    }
}

TEST_F(ConnectionTest, AReplySentTwiceDoesNotAnswerTheNextRequest)
{
    start("double@nth=1");
    expectAnswer(20);
    const Aftermath before = expectAnswer(30);
    EXPECT_EQ(before.lateReplies, 1);
    EXPECT_TRUE(before.reconnected);
}

TEST_F(ConnectionTest, WhileBackingOffNothingIsTried)
{
    options.backOff = {tooLongMs, tooLongMs};
    start();
    station->stopListening();
    EXPECT_FALSE(connection->open());
    EXPECT_EQ(connection->cause(), LinkCause::Refused);
    ASSERT_TRUE(station->listenAgain(nullptr));
    EXPECT_EQ(ask(20).end, Exchange::NotSent);
    EXPECT_TRUE(station->requests().isEmpty());
}

} // namespace
