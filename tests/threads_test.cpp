// SPDX-License-Identifier: MIT
// Panel threads write, read, rebuild the poll list and switch a station off and on while the cycle runs.
// Under ThreadSanitizer this shows races; without it, wrong results.
#include "driver_checks.h"
#include "memory_station.h"

#include <gtest/gtest.h>

#include <thread>

using namespace modbus_driver;

namespace {

const int writers = 2;
const int places = 8; ///< 32-bit values and one bit that each writer owns
const int rounds = 2000;
const int pairsFrom = 64; ///< of writer 0; those of writer 1 follow, each in two registers
const int units = 3;
const int switched = 3;     ///< no writer's: two writes of one place change order when their station is off
const int bitsOf = 120;     ///< the register in which every writer owns a bit
const int lossesEvery = 23; ///< of so many exchanges two in a row are lost: a request is given up

int pairAddress(int writer, int place)
{
    return pairsFrom + 2 * (writer * places + place);
}

int itemOf(int writer, int place)
{
    return writer * (places + 1) + place;
}

struct Counts
{
    int exchanges = 0, lost = 0, good = 0, retries = 0, givenUp = 0, writesBuilt = 0;
    int notified = 0, done = 0, reportedGivenUp = 0, queueGivenUp = 0;
    int lastOutcome[writers * (places + 1)] = {};
} counts;

const int onceReadId = 50;

void writeDone(int, int id, int item, int outcome)
{
    counts.done += outcome == 1;
    counts.reportedGivenUp += outcome == 2;
    if (id != onceReadId)
        counts.lastOutcome[item] = outcome;
}

void itemNotify(QList<RW_VAR> *, int, int)
{
    ++counts.notified;
}

class Threads : public testing::TestWithParam<bool>
{
protected:
    Threads()
    {
        settings.multiStation = GetParam();
        settings.writeBlockSize = 8;
        settings.defaultStation = 1;
        settings.retryLimit = 1;
        settings.writeMode = 2;
        freshDriver(&settings);
        RegistCallBackFuncIntf(writeDone, itemNotify);
        counts = Counts();
    }

    int unitOf(int writer) const { return settings.multiStation ? 1 + writer : 1; }
    int write(int writer, int area, const QString &address, QByteArray value, int place)
    {
        return SetRegisterData(QString(), area, address, unitOf(writer), value, value.size() == 4 ? 2 : 1, 0,
                               itemOf(writer, place));
    }
    int registerOf(int writer, int address)
    {
        return station.table(unitOf(writer), AreaHoldingRegisters)[static_cast<std::size_t>(address)];
    }
    void rebuild(int areas);
    void exchange();
    void communicate();
    void lookForTornValues(int area, int address, int unit);
    void writeAndReadBack(int writer);
    void showAndSwitch();

    CommSettings settings;
    MemoryStation station;
    std::atomic<bool> panelsDone{false};
    std::atomic<int> torn{0};
};

void Threads::rebuild(int areas)
{
    QList<VAR_ITEM> items;
    for (int unit = 1; unit <= units; ++unit) {
        for (int k = 0; k < areas; ++k) {
            VAR_ITEM item;
            item.area = static_cast<quint8>(7 - k % 2);
            item.station = static_cast<quint8>(unit);
            item.addressText = QString::number(k / 2 * pairsFrom);
            item.count = 64;
            items.append(item);
        }
    }
    ReCreatReadVarList(&items);
}

void Threads::exchange()
{
    const bool isNew = PLC_driver.pendingList.isEmpty();
    const Protocol *request = ComCommunication();
    if (!request)
        return;
    counts.writesBuilt += isNew && PLC_driver.currentKind == OriginWrite;
    const bool lost = ++counts.exchanges % lossesEvery < 2 && !panelsDone;
    counts.lost += lost;
    for (int unit = 1; unit <= units; ++unit) { // both halves of every 32-bit input change at once
        for (quint16 &input : station.table(unit, AreaInputRegisters))
            input = static_cast<quint16>(counts.exchanges);
    }
    QByteArray reply = lost ? QByteArray() : station.reply(request->frame);
    const int status = DataCom(&reply, reply.size())->status;
    counts.good += status == 1;
    counts.retries += status == 0;
    counts.givenUp += status > 1;
    counts.queueGivenUp += status > 1 && PLC_driver.currentKind != OriginPoll;
}

/// Until the panels are done and all that they queued has been served.
void Threads::communicate()
{
    while (!panelsDone)
        exchange();
    while (!PLC_driver.writeList.isEmpty() || !PLC_driver.onceReadList.isEmpty() || !PLC_driver.pendingList.isEmpty())
        exchange();
}

void Threads::lookForTornValues(int area, int address, int unit)
{
    QByteArray values;
    GetRegisterData(0, area, QString::number(address), unit, values, 2 * places);
    for (int i = 0; i + 3 < values.size(); i += 4)
        torn += values.mid(i, 2) != values.mid(i + 2, 2);
}

void Threads::writeAndReadBack(int writer)
{
    for (int round = 1; round <= rounds; ++round) {
        for (int place = 0; place < places; ++place) {
            const QByteArray half(1, static_cast<char>(round));
            const QByteArray word = half + static_cast<char>(round >> 8);
            write(writer, 7, QString::number(pairAddress(writer, place)), word + word, place);
        }
        write(writer, 3, QString::fromLatin1("%1.%2").arg(bitsOf).arg(writer), QByteArray(1, static_cast<char>(round % 2)),
              places);
        lookForTornValues(7, pairAddress(writer, 0), unitOf(writer));
    }
}

void Threads::showAndSwitch()
{
    for (int round = 1; round <= rounds; ++round) {
        rebuild(2 + 2 * (round % 2));
        EnCommStation(switched, round % 2);
        RW_VAR read;
        read.hostId = onceReadId;
        read.hostItem = round;
        read.area = 4;
        read.addressText = QString::number(2 * (round % 50));
        read.station = 1;
        read.dataLength = 2;
        AddListOnceReadVar(&read, 0);
        for (int unit = 1; unit <= units; ++unit)
            lookForTornValues(6, 0, unit);
    }
    rebuild(4);
    EnCommStation(-1, 1);
}

TEST_P(Threads, PanelsAndTheCycleAgreeOnEveryValue)
{
    rebuild(4);
    std::thread cycle([this] { communicate(); });
    std::vector<std::thread> panels;
    for (int writer = 0; writer < writers; ++writer)
        panels.emplace_back([this, writer] { writeAndReadBack(writer); });
    panels.emplace_back([this] { showAndSwitch(); });
    for (std::thread &panel : panels)
        panel.join();
    panelsDone = true;
    cycle.join();
    for (int i = 0; i <= 2 * PLC_driver.readList.size(); ++i)
        exchange();

    EXPECT_EQ(torn, 0) << "32-bit values of which only a half had changed";
    EXPECT_EQ(violatedInvariant(), nullptr);
    EXPECT_EQ(counts.good + counts.retries + counts.givenUp, counts.exchanges);
    EXPECT_EQ(counts.retries + counts.givenUp, counts.lost);
    EXPECT_EQ(counts.notified, counts.writesBuilt + counts.givenUp);
    EXPECT_EQ(counts.reportedGivenUp, counts.queueGivenUp);
    for (int writer = 0; writer < writers; ++writer) {
        for (int place = 0; place <= places; ++place) {
            const int outcome = counts.lastOutcome[itemOf(writer, place)];
            ASSERT_NE(outcome, 0) << "a write was neither done nor reported";
            const int address = place < places ? pairAddress(writer, place) : bitsOf;
            const int holds = place < places ? registerOf(writer, address) : registerOf(writer, address) >> writer & 1;
            EXPECT_TRUE(outcome == 2 || holds == (place < places ? rounds : rounds % 2)) << "a write was lost";
        }
        QByteArray image;
        GetRegisterData(0, 5, QString::number(pairAddress(writer, 0)), unitOf(writer), image, 1);
        EXPECT_EQ(quint8(image.at(0)) | quint8(image.at(1)) << 8, registerOf(writer, pairAddress(writer, 0)));
    }
}

INSTANTIATE_TEST_SUITE_P(Image, Threads, testing::Bool(), [](const auto &mode) { return mode.param ? "PerStation" : "Shared"; });

} // namespace
