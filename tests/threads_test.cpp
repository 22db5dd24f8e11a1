// SPDX-License-Identifier: MIT
// Panel threads write, read, rebuild the poll list and switch a station off and on while the cycle runs. Under
// ThreadSanitizer this shows races; without it, values of which only a half has changed, and writes that are lost.
#include "driver_fixture.h"
#include "memory_station.h"

#include <atomic>
#include <thread>

using namespace modbus_driver;

namespace {

const int writers = 2, units = 3, rounds = 2000;
const int values = 8;       ///< 32-bit values that each writer owns, besides a bit of register 40
const int switched = 3;     ///< nobody writes this unit: two writes of one place change order when it is off
const int lossesEvery = 23; ///< of so many exchanges two in a row are lost: a request is given up

int outcomes[writers][values + 1]; ///< the last one of each value, and of the bit
std::atomic<bool> panelsDone;
std::atomic<int> torn;

void writeDone(int, int id, int item, int outcome)
{
    if (id < writers)
        outcomes[id][item] = outcome;
}

int addressOf(int writer, int value)
{
    return value == values ? 16 * 40 + writer : 2 * (writer * values + value);
}

void lookForTornValues(int area, int address, int unit)
{
    const std::string shown = value(area, std::to_string(address), 2 * values, unit);
    for (std::size_t i = 0; i < shown.size(); i += 8)
        torn += shown.compare(i, 4, shown, i + 4, 4) != 0;
}

void writeAndReadBack(int writer, int unit)
{
    for (int round = 1; round <= rounds; ++round) {
        const std::string half = hex(QByteArray(1, static_cast<char>(round)).append(static_cast<char>(round >> 8)));
        for (int k = 0; k < values; ++k)
            write(Pairs, std::to_string(addressOf(writer, k)), 2, half + half, writer, k, unit);
        write(RegisterBit, writer ? "40.1" : "40.0", 1, round % 2 ? "01" : "00", writer, values, unit);
        lookForTornValues(Pairs, addressOf(writer, 0), unit);
    }
}

void pollSwitchAndShow()
{
    for (int round = 1; round <= rounds; ++round) {
        poll(round % 2 ? "1/7:0*32 2/7:0*32" : "1/7:0*32 1/6:0*32 2/7:0*32 2/6:0*32 3/6:0*32");
        EnCommStation(switched, round % 2);
        RW_VAR read = by(writers, access(InputRegisters, 0, 2));
        read.addressText = QString::number(2 * (round % values));
        AddListOnceReadVar(&read, QueueMerged);
        for (int unit = 1; unit <= units; ++unit)
            lookForTornValues(InputPairs, 0, unit);
    }
    EnCommStation(-1, 1);
}

void serve(MemoryStation &station, int exchange)
{
    const Protocol *request = ComCommunication();
    const bool isLost = exchange % lossesEvery < 2 && !panelsDone;
    for (int k = 0; k < units * 2 * writers * values; ++k) // both halves of every 32-bit input change at once
        station.put(1 + k % units, InputRegisters, k / units, exchange & 0xFFFF);
    QByteArray reply = request && !isLost ? station.reply(request->frame) : QByteArray();
    DataCom(&reply, reply.size());
}

class Threads : public DriverFixture, public testing::WithParamInterface<bool>
{
};

TEST_P(Threads, PanelsAndTheCycleAgreeOnEveryValue)
{
    restart(GetParam());
    settings.retryLimit = 1;
    RegistCallBackFuncIntf(writeDone, nullptr);
    std::fill_n(&outcomes[0][0], writers * (values + 1), 0);
    panelsDone = false;
    const int unitOf[writers] = {1, GetParam() ? 2 : 1};
    MemoryStation station;
    int exchanges = 0;
    std::thread cycle([&] {
        while (!panelsDone)
            serve(station, ++exchanges);
    });
    std::thread panels[] = {std::thread(&writeAndReadBack, 0, unitOf[0]), std::thread(&writeAndReadBack, 1, unitOf[1]),
                            std::thread(&pollSwitchAndShow)};
    for (std::thread &panel : panels)
        panel.join();
    panelsDone = true;
    cycle.join();
    for (int rest = 20; rest > 0; rest -= PLC_driver.writeList.isEmpty())
        serve(station, ++exchanges);

    EXPECT_EQ(torn, 0) << "32-bit values of which only a half had changed";
    for (int k = 0; k < writers * (values + 1); ++k) {
        const int writer = k % writers, item = k / writers, outcome = outcomes[writer][item];
        const bool isBit = item == values;
        const int shown = station.at(unitOf[writer], isBit ? RegisterBit : Registers, addressOf(writer, item));
        EXPECT_TRUE(outcome == WriteDoneGivenUp || (outcome && shown == (isBit ? rounds % 2 : rounds)))
            << "writer " << writer << ", item " << item << (outcome ? " was lost" : " was neither done nor reported");
    }
}

INSTANTIATE_TEST_SUITE_P(Image, Threads, testing::Bool(), [](const auto &mode) { return mode.param ? "PerStation" : "Shared"; });

} // namespace
