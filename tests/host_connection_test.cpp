// SPDX-License-Identifier: MIT
// The host's connection against a station that sends what nobody asked for. The driver has no part in it. LIES=3333 asks
// for ten thousand exchanges of each kind.

#include "../driver/base/modbus_wire.h"
#include "../host/link/connection.h"
#include "host_words.h"
#include "lying_station.h"

#include <cerrno>
#include <tuple>

namespace {

using namespace modbus_driver::wire;

const int timeOutMs = 30;
const int patientMs = 60000;

Protocol request(int unit, int function, int address, int value)
{
    Protocol protocol;
    protocol.frame = bytes("0000 0000 0006 00 00 0000 0000");
    protocol.frame[UnitAt] = static_cast<char>(unit);
    protocol.frame[FunctionAt] = static_cast<char>(function);
    putWord(protocol.frame.data() + AddressAt, address);
    putWord(protocol.frame.data() + ValueAt, value);
    protocol.frameLength = protocol.frame.size();
    const bool isRead = isReadFunction(function);
    protocol.replyLength = unit == 0 ? 0 : isRead ? ReadReplyHeader + 2 * value : WriteEchoLength;
    protocol.var.station = unit;
    protocol.var.rwFlag = isRead ? 0 : 1;
    return protocol;
}

class ConnectionTest : public testing::Test
{
protected:
    ConnectionTest()
    {
        options.host = QStringLiteral("127.0.0.1");
        options.timeoutMs = timeOutMs;
        options.patienceMs = timeOutMs;
        options.backOff = {1, 1, 0, 0};
    }

    void connectTo(const Lie &lie)
    {
        connection.reset();
        station = std::make_unique<LyingStation>(lie);
        options.port = station->port();
        connection = std::make_unique<Connection>(options, trace, stop);
    }

    /// True when the register was read; another value than it can hold is a failure.
    bool readRegister(int unit, int address)
    {
        const Exchange exchange = connection->exchange(request(unit, ReadHoldingRegisters, address, 1));
        late += exchange.before.lateUnits.size();
        if (exchange.end != Exchange::Answered)
            return false;
        EXPECT_EQ(wordAt(exchange.reply, TransactionAt), 0) << "the driver's frames carry 0";
        EXPECT_EQ(wordAt(exchange.reply, ReadDataAt), 256 * unit + address) << "a foreign value";
        return true;
    }

    /// True when the write was acknowledged; one that the station did not carry out is a failure.
    bool writeRegister(int unit, int address)
    {
        const int before = station->writes();
        const Exchange exchange = connection->exchange(request(unit, WriteSingleRegister, address, 7));
        if (exchange.end != Exchange::Answered)
            return false;
        EXPECT_EQ(station->writes(), before + 1) << "acknowledged, but not carried out";
        return true;
    }

    NoTrace trace;
    std::atomic<bool> stop{false};
    ConnectionOptions options;
    std::unique_ptr<LyingStation> station;
    std::unique_ptr<Connection> connection;
    int late = 0;
};

Lie lie(const char *name, const std::function<void(Lie &)> &change)
{
    Lie made;
    made.name = name;
    change(made);
    return made;
}

const Lie lies[] = {
    lie("nothing", [](Lie &) {}),
    lie("doubled at once", [](Lie &l) { l.doubleAfterMs = 0; }),
    lie("doubled after 1 ms", [](Lie &l) { l.doubleAfterMs = 1; }),
    lie("doubled after 5 ms", [](Lie &l) { l.doubleAfterMs = 5; }),
    lie("doubled, and some requests ignored", [](Lie &l) { l.doubleAfterMs = 1, l.silentEach = 3; }),
    lie("unasked at connect", [](Lie &l) { l.asksNothing = true, l.silentEach = 4; }),
    lie("one reply behind", [](Lie &l) { l.isOneBehind = true; }),
    lie("late around the time-out", [](Lie &l) { l.slowEach = 2, l.slowMs = timeOutMs; }),
    lie("late into the next connection", [](Lie &l) { l.slowEach = 3, l.slowMs = timeOutMs + 6; }),
    lie("closes after each reply", [](Lie &l) { l.closes = true; }),
    lie("floods", [](Lie &l) { l.floods = true; }),
};

TEST_F(ConnectionTest, ShowsNoForeignValueAndNoWriteThatWasNotCarriedOut)
{
    const int rounds = qEnvironmentVariableIsSet("LIES") ? qEnvironmentVariableIntValue("LIES") : 2;
    for (const AfterTimeout policy : {AfterTimeout::Numbers, AfterTimeout::Reconnect, AfterTimeout::Drain}) {
        options.afterTimeout = policy;
        for (Lie told : lies) {
            for (const Lie::Numbers numbers : {Lie::Echoed, Lie::Zero, Lie::Wrong}) {
                if (numbers == Lie::Wrong && policy != AfterTimeout::Numbers)
                    continue; // nothing is accepted, and the time-outs take long
                SCOPED_TRACE(testing::Message()
                             << told.name << ", numbers " << numbers << ", policy " << static_cast<int>(policy));
                told.numbers = numbers;
                const bool isHonest = told.name == lies[0].name && numbers != Lie::Wrong;
                options.timeoutMs = isHonest ? patientMs : timeOutMs;
                connectTo(told);
                int good = 0;
                for (int i = 0; i < rounds; ++i) {
                    good += readRegister(1, 40 + i % 50);
                    good += readRegister(1, 100 + i % 50);
                    good += writeRegister(1, 9);
                    good += writeRegister(1, 9);
                }
                EXPECT_TRUE(!isHonest || good == 4 * rounds);
                EXPECT_TRUE(numbers != Lie::Wrong || good == 0);
            }
        }
    }
}

TEST_F(ConnectionTest, ATimeOutOnOneUnitLeavesTheConnectionToTheOthers)
{
    const int longMs = 300; // a busy machine's pause is no time-out
    options.timeoutMs = longMs;
    connectTo(lie("late", [](Lie &l) { l.slowEach = 2, l.slowMs = 3 * longMs / 2; }));
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(readRegister(1, 10));
        EXPECT_FALSE(readRegister(2, 10));
    }
    EXPECT_EQ(station->connections(), 1);
    EXPECT_GE(late, 2) << "counted where they come in";
    EXPECT_EQ(connection->numbers(), TransactionNumbers::Echoed);
}

TEST_F(ConnectionTest, FindsOutThatAStationEchoesNoNumbers)
{
    options.timeoutMs = patientMs;
    connectTo(lie("zero", [](Lie &l) { l.numbers = Lie::Zero; }));
    EXPECT_TRUE(readRegister(1, 10));
    EXPECT_EQ(connection->numbers(), TransactionNumbers::NotEchoed);
    EXPECT_TRUE(readRegister(1, 11));
    EXPECT_EQ(station->connections(), 1);
}

TEST_F(ConnectionTest, ABroadcastsEchoIsNoReplyToAnything)
{
    options.timeoutMs = patientMs;
    for (const Lie::Numbers numbers : {Lie::Echoed, Lie::Zero}) {
        connectTo(lie("echo", [numbers](Lie &l) { l.numbers = numbers; }));
        QElapsedTimer timer;
        timer.start();
        EXPECT_EQ(connection->exchange(request(0, WriteSingleRegister, 9, 7)).end, Exchange::Sent);
        EXPECT_GE(timer.elapsed(), 100) << "the units' turnaround";
        EXPECT_TRUE(readRegister(1, 9));
        EXPECT_EQ(station->connections(), 1);
        EXPECT_EQ(late, 0);
    }
}

TEST(LinkCauseText, NamesWhatIsKnownOfAConnectionThatDoesNotOpen)
{
    const std::tuple<LinkCause, const char *> rows[] = {
        {LinkCause::Refused, "connection refused"},
        {LinkCause::NoRoute, "no route to host"},
        {{LinkCause::NoAnswer, 700}, "no answer within 700 ms"},
        {{LinkCause::NotOpened, EMFILE}, "Too many open files"},
        {LinkCause::NoSuchName, "no such host name"},
        {LinkCause::Stopped, "stopped while waiting"},
    };
    for (const auto &[cause, text] : rows)
        EXPECT_EQ(linkCauseText(cause), QString::fromLatin1(text));
}

TEST_F(ConnectionTest, AStopEndsEveryWaitSoon)
{
    using Wait = std::function<void()>;
    const std::tuple<const char *, Lie, Wait> waits[] = {
        {"a reply", lie("silent", [](Lie &l) { l.silentEach = 1; }), [this] { readRegister(1, 1); }},
        {"the gap", Lie(), [this] { readRegister(1, 1), readRegister(1, 1); }},
        {"a flood to end", lie("flood", [](Lie &l) { l.floods = true; }), [this] { readRegister(1, 1), readRegister(1, 1); }},
        {"a connection", Lie(),
         [this] {
             options.host = QStringLiteral("192.0.2.1"), connection = std::make_unique<Connection>(options, trace, stop),
             connection->open();
         }},
        {"a name", Lie(),
         [this] {
             options.host = QStringLiteral("no.such.name.example"),
             connection = std::make_unique<Connection>(options, trace, stop), connection->open();
         }},
    };
    options.timeoutMs = options.patienceMs = options.gapMs = patientMs;
    options.afterTimeout = AfterTimeout::Drain;
    for (const auto &[what, told, wait] : waits) {
        stop = false;
        connectTo(told);
        QElapsedTimer timer;
        std::thread stopper([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            timer.start();
            stop = true;
        });
        wait();
        stopper.join();
        EXPECT_LT(timer.elapsed(), 500) << what;
    }
}

} // namespace
