// SPDX-License-Identifier: MIT
// Panel threads write, read, rebuild the poll list and switch a station off and on while the cycle runs. Under
// ThreadSanitizer this shows races; without it, values of which only a half has changed, and writes that are lost.
#include "driver_fixture.h"
#include "memory_station.h"

#include <thread>

using namespace modbus_driver;

namespace {

const int writers = 2;
const int values = 8; ///< 32-bit values that each writer owns
const int rounds = 2000;
const int units = 3;
const int switched = 3;     ///< nobody writes this unit: two writes of one place change order when it is off
const int bitsOf = 40;      ///< the register in which every writer owns a bit
const int lossesEvery = 23; ///< of so many exchanges two in a row are lost: a request is given up

int outcomes[writers][values + 1]; ///< the last one of each value, and of the bit

void writeDone(int, int id, int item, int outcome)
{
    if (id < writers)
        outcomes[id][item] = outcome;
}

class Threads : public testing::TestWithParam<bool>
{
protected:
    int unitOf(int writer) const { return settings.multiStation ? 1 + writer : 1; }
    static int addressOf(int writer, int value) { return 2 * (writer * values + value); }

    void write(int writer, int area, const QString &address, QByteArray value, int item)
    {
        SetRegisterData(QString(), area, address, unitOf(writer), value, value.size() == 4 ? 2 : 1, writer, item);
    }

    void lookForTornValues(int area, int address, int unit)
    {
        QByteArray shown;
        GetRegisterData(0, area, QString::number(address), unit, shown, 2 * values);
        for (int i = 0; i + 3 < shown.size(); i += 4)
            torn += shown.mid(i, 2) != shown.mid(i + 2, 2);
    }

    void writeAndReadBack(int writer)
    {
        for (int round = 1; round <= rounds; ++round) {
            const QByteArray half = QByteArray(1, static_cast<char>(round)).append(static_cast<char>(round >> 8));
            for (int value = 0; value < values; ++value)
                write(writer, Pairs, QString::number(addressOf(writer, value)), half + half, value);
            const QByteArray bit(1, static_cast<char>(round % 2));
            write(writer, RegisterBit, QString::fromLatin1("%1.%2").arg(bitsOf).arg(writer), bit, values);
            lookForTornValues(Pairs, addressOf(writer, 0), unitOf(writer));
        }
    }

    void rebuild(int areas)
    {
        QList<VAR_ITEM> items;
        for (int unit = 1; unit <= units; ++unit) {
            for (int area = Pairs; area > Pairs - areas; --area) {
                VAR_ITEM item;
                item.area = static_cast<quint8>(area);
                item.station = static_cast<quint8>(unit);
                item.addressText = QString::number(0);
                item.count = 2 * writers * values;
                items.append(item);
            }
        }
        ReCreatReadVarList(&items);
    }

    void pollSwitchAndShow()
    {
        for (int round = 1; round <= rounds; ++round) {
            rebuild(1 + round % 2);
            EnCommStation(switched, round % 2);
            RW_VAR read = access(InputRegisters, 0, 2);
            read.hostId = writers;
            read.addressText = QString::number(2 * (round % values));
            AddListOnceReadVar(&read, QueueMerged);
            for (int unit = 1; unit <= units; ++unit)
                lookForTornValues(InputPairs, 0, unit);
        }
        rebuild(2);
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

    CommSettings settings;
    MemoryStation station;
    std::atomic<bool> panelsDone{false};
    std::atomic<int> torn{0};
    int exchanges = 0;
};

TEST_P(Threads, PanelsAndTheCycleAgreeOnEveryValue)
{
    settings.multiStation = GetParam();
    settings.writeBlockSize = 8;
    settings.defaultStation = settings.retryLimit = 1;
    settings.writeMode = WriteModeToStation;
    reloadDriver(&settings);
    RegistCallBackFuncIntf(writeDone, nullptr);
    std::fill_n(&outcomes[0][0], writers * (values + 1), 0);
    rebuild(2);
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
    for (int rest = 2 * PLC_driver.readList.size(); rest > 0; rest -= PLC_driver.writeList.isEmpty())
        exchange();

    EXPECT_EQ(torn, 0) << "32-bit values of which only a half had changed";
    for (int writer = 0; writer < writers; ++writer) {
        for (int item = 0; item <= values; ++item) {
            const int area = item < values ? int(Registers) : int(RegisterBit), unit = unitOf(writer);
            const int address = item < values ? addressOf(writer, item) : 16 * bitsOf + writer;
            const int wanted = item < values ? rounds : rounds % 2, outcome = outcomes[writer][item];
            ASSERT_NE(outcome, 0) << "writer " << writer << ", item " << item << " was neither done nor reported";
            EXPECT_TRUE(outcome == WriteDoneGivenUp || station.at(unit, area, address) == wanted)
                << "writer " << writer << ", item " << item << " was lost";
        }
        QByteArray image;
        GetRegisterData(0, Registers, QString::number(addressOf(writer, 0)), unitOf(writer), image, 1);
        EXPECT_EQ(quint8(image.at(0)) | quint8(image.at(1)) << 8, station.at(unitOf(writer), Registers, addressOf(writer, 0)));
    }
}

INSTANTIATE_TEST_SUITE_P(Image, Threads, testing::Bool(), [](const auto &mode) { return mode.param ? "PerStation" : "Shared"; });

} // namespace
