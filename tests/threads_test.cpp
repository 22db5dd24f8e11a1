// SPDX-License-Identifier: MIT
// Panel threads write, read, rebuild the poll list and switch a station off and on while the cycle runs. Under
// ThreadSanitizer this shows races; without it, values of which only a half has changed, and writes that are lost.
#include "driver_fixture.h"
#include "memory_station.h"

#include <thread>

using namespace modbus_driver;

namespace {

const int writers = 2, units = 3;
const int values = 8; ///< 32-bit values that each writer owns, besides a bit of register 40
const int rounds = 2000;
const int switched = 3;     ///< nobody writes this unit: two writes of one place change order when it is off
const int lossesEvery = 23; ///< of so many exchanges two in a row are lost: a request is given up

int outcomes[writers][values + 1]; ///< the last one of each value, and of the bit

void writeDone(int, int id, int item, int outcome)
{
    if (id < writers)
        outcomes[id][item] = outcome;
}

class Threads : public DriverFixture, public testing::WithParamInterface<bool>
{
protected:
    int unitOf(int writer) const { return settings.multiStation ? 1 + writer : 1; }
    static int addressOf(int writer, int value) { return 2 * (writer * values + value); }

    void lookForTornValues(int area, int address, int unit)
    {
        const std::string shown = value(area, std::to_string(address).c_str(), 2 * values, unit);
        for (std::size_t i = 0; i < shown.size(); i += 8)
            torn += shown.compare(i, 4, shown, i + 4, 4) != 0;
    }

    void writeAndReadBack(int writer)
    {
        for (int round = 1; round <= rounds; ++round) {
            const std::string half = hex(QByteArray(1, static_cast<char>(round)).append(static_cast<char>(round >> 8)));
            for (int k = 0; k < values; ++k)
                write(Pairs, std::to_string(addressOf(writer, k)).c_str(), 2, (half + half).c_str(), writer, k, unitOf(writer));
            write(RegisterBit, writer ? "40.1" : "40.0", 1, round % 2 ? "01" : "00", writer, values, unitOf(writer));
            lookForTornValues(Pairs, addressOf(writer, 0), unitOf(writer));
        }
    }

    void pollSwitchAndShow()
    {
        for (int round = 1; round <= rounds; ++round) {
            poll(round % 2 ? "1/7:0*32 2/7:0*32" : "1/7:0*32 1/6:0*32 2/7:0*32 2/6:0*32 3/6:0*32");
            EnCommStation(switched, round % 2);
            RW_VAR read = access(InputRegisters, 0, 2);
            read.hostId = writers;
            read.addressText = QString::number(2 * (round % values));
            AddListOnceReadVar(&read, QueueMerged);
            for (int unit = 1; unit <= units; ++unit)
                lookForTornValues(InputPairs, 0, unit);
        }
        EnCommStation(-1, 1);
    }

    void exchange()
    {
        const Protocol *request = ComCommunication();
        if (!request)
            return;
        const bool lost = ++exchanges % lossesEvery < 2 && !panelsDone;
        for (int unit = 1; unit <= units; ++unit) { // both halves of every 32-bit input change at once
            for (int input = 0; input < 2 * writers * values; ++input)
                station.put(unit, InputRegisters, input, exchanges & 0xFFFF);
        }
        QByteArray reply = lost ? QByteArray() : station.reply(request->frame);
        DataCom(&reply, reply.size());
    }

    MemoryStation station;
    std::atomic<bool> panelsDone{false};
    std::atomic<int> torn{0};
    int exchanges = 0;
};

TEST_P(Threads, PanelsAndTheCycleAgreeOnEveryValue)
{
    restart(GetParam());
    settings.retryLimit = 1;
    settings.linkId = 0;
    RegistCallBackFuncIntf(writeDone, nullptr);
    std::fill_n(&outcomes[0][0], writers * (values + 1), 0);
    std::thread cycle([this] {
        while (!panelsDone)
            exchange();
    });
    std::vector<std::thread> panels;
    for (int writer = 0; writer < writers; ++writer)
        panels.emplace_back([this, writer] { writeAndReadBack(writer); });
    panels.emplace_back([this] { pollSwitchAndShow(); });
    for (std::thread &panel : panels)
        panel.join();
    panelsDone = true;
    cycle.join();
    for (int rest = 20; rest > 0; rest -= PLC_driver.writeList.isEmpty())
        exchange();

    EXPECT_EQ(torn, 0) << "32-bit values of which only a half had changed";
    for (int writer = 0; writer < writers; ++writer) {
        for (int item = 0; item <= values; ++item) {
            const bool isBit = item == values;
            const int address = isBit ? 16 * 40 + writer : addressOf(writer, item), outcome = outcomes[writer][item];
            ASSERT_NE(outcome, 0) << "writer " << writer << ", item " << item << " was neither done nor reported";
            EXPECT_TRUE(outcome == WriteDoneGivenUp ||
                        station.at(unitOf(writer), isBit ? RegisterBit : Registers, address) == (isBit ? rounds % 2 : rounds))
                << "writer " << writer << ", item " << item << " was lost";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Image, Threads, testing::Bool(), [](const auto &mode) { return mode.param ? "PerStation" : "Shared"; });

} // namespace
