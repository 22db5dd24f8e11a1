// SPDX-License-Identifier: MIT
// The connection of the example hosts, against a station that sends what nobody asked for. It may lose replies, but never
// takes one for another. LIES=N makes N rounds with each kind of station.
#include "lying_station.h"

#include "../driver/base/modbus_wire.h"
#include "../examples/host/link.h"

#include <gtest/gtest.h>

using namespace modbus_driver::wire;

namespace {

enum Share { None, Some, All };

struct Row
{
    const char *name;
    Lie lie;
    Share good;
    int patienceMs = 5000;
};

template <typename Change> Lie lie(Change change)
{
    Lie made;
    change(made);
    return made;
}

Protocol request(int function, int address, int value)
{
    Protocol made;
    made.frame = QByteArray::fromHex("000000000006010000000000");
    made.frame[FunctionAt] = static_cast<char>(function);
    putWord(made.frame.data() + AddressAt, address);
    putWord(made.frame.data() + ValueAt, value);
    made.frameLength = made.replyLength = RequestLength;
    return made;
}

/// The replies that were taken for good. A foreign value, or a write that was not carried out, is a failure.
int exchanges(const Row &row, int rounds)
{
    LyingStation station(row.lie);
    Link link(QStringLiteral("127.0.0.1"), station.port(), row.patienceMs);
    int good = 0;
    for (int i = 0; i < rounds; ++i) {
        const int address = 40 + i % 50;
        const QByteArray value = link.exchange(request(ReadHoldingRegisters, address, 1));
        EXPECT_TRUE(value.isEmpty() || wordAt(value, ReadDataAt) == 256 + address) << "a foreign value";
        const int writes = station.writes();
        const QByteArray echo = link.exchange(request(WriteSingleRegister, 9, i));
        EXPECT_TRUE(echo.isEmpty() || station.writes() == writes + 1) << "not carried out";
        EXPECT_EQ(wordAt(value, TransactionAt) + wordAt(echo, TransactionAt), 0) << "the driver's number";
        good += !value.isEmpty() + !echo.isEmpty();
    }
    return good;
}

} // namespace

TEST(ExampleLink, TakesNoReplyForAnother)
{
    const int rounds = qMax(10, qEnvironmentVariableIntValue("LIES"));
    const Row rows[] = {
        {"honest", Lie(), All},
        {"doubled at once", lie([](Lie &l) { l.doubleAfterMs = 0; }), Some},
        {"doubled after 1 ms", lie([](Lie &l) { l.doubleAfterMs = 1; }), Some},
        {"doubled after 5 ms", lie([](Lie &l) { l.doubleAfterMs = 5; }), Some},
        {"closes after each reply", lie([](Lie &l) { l.closes = true; }), Some},
        {"late around the time-out", lie([](Lie &l) { l.slowEach = 2, l.slowMs = 40; }), Some, 40},
        {"late into the next connection", lie([](Lie &l) { l.slowEach = 3, l.slowMs = 46; }), Some, 40},
        {"one reply behind", lie([](Lie &l) { l.isOneBehind = true; }), None, 40},
        {"unasked at connect", lie([](Lie &l) { l.asksNothing = true; }), None},
        {"numbers not repeated", lie([](Lie &l) { l.numbers = Lie::Zero; }), None},
        {"numbers wrong", lie([](Lie &l) { l.numbers = Lie::Wrong; }), None},
        {"floods", lie([](Lie &l) { l.floods = true; }), None},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const int good = exchanges(row, rounds);
        EXPECT_EQ(good == 0, row.good == None) << good;
        EXPECT_TRUE(row.good != All || good == 2 * rounds) << good;
    }
}
