// SPDX-License-Identifier: MIT
// A virtual day: millions of exchanges with writes, one-shot reads, failures, rebuilds and switched-off
// stations mixed in. Nothing may grow. The environment's MODBUS_LONG_RUN says how many exchanges; see
// scripts/test --long.
#include "driver_checks.h"
#include "in_memory_station.h"

#include <QtCore/QFile>

#include <gtest/gtest.h>

namespace {

const int warmUp = 10000;

int exchanges()
{
    bool ok = false;
    const int asked = qEnvironmentVariableIntValue("MODBUS_LONG_RUN", &ok);
    return ok ? qMax(2 * warmUp, asked) : 300000;
}

/// Memory of this process, in pages.
long residentPages()
{
    QFile file(QString::fromLatin1("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLong() : 0;
}

int writesDone, writesGivenUp;

void writeDone(int, int, int, int outcome)
{
    ++(outcome == 1 ? writesDone : writesGivenUp);
}

void rebuild(int registers)
{
    QList<VAR_ITEM> items;
    for (quint8 station = 1; station <= 3; ++station) {
        for (quint8 area = 0; area < 8; ++area) {
            VAR_ITEM item;
            item.area = area;
            item.station = station;
            item.addressText = QString::fromLatin1(area == 2 || area == 3 ? "20.1" : "20");
            item.count = registers;
            items.append(item);
        }
    }
    ReCreatReadVarList(&items);
}

/// What the panels do ahead of exchange i.
void actAsPanels(int i)
{
    const int station = 1 + i % 3;
    const QString address = QString::number(20 + i % 50);
    if (i % 7 == 0) {
        QByteArray value(4, static_cast<char>(i));
        SetRegisterData(address, i % 2 ? 5 : 7, address, station, value, 2, 1, i % 50);
    }
    if (i % 11 == 0) {
        QByteArray bit(1, i & 1);
        SetRegisterData(address, 3, address + QString::fromLatin1(".7"), station, bit, 1, 2, i % 50);
    }
    if (i % 13 == 0) {
        RW_VAR read;
        read.area = 4;
        read.addressText = address;
        read.station = station;
        read.dataLength = 3;
        AddListOnceReadVar(&read, 0);
    }
    if (i % 1000 == 0)
        rebuild(60 + i / 1000 % 2);
    if (i % 500 == 0)
        EnCommStation(3, i / 500 % 2);
    QByteArray shown;
    GetRegisterData(0, 7, address, station, shown, 2);
}

/// Lost, too short, or right.
void exchange(int i, InMemoryStation *station)
{
    const Protocol *request = ComCommunication();
    if (!request)
        return;
    QByteArray reply = station->reply(request->frame);
    if (i % 17 < 2)
        reply.clear();
    if (i % 101 == 0)
        reply.truncate(7);
    DataCom(&reply, reply.size());
}

class LongRun : public testing::TestWithParam<bool>
{
};

TEST_P(LongRun, NothingGrows)
{
    CommSettings settings;
    settings.multiStation = GetParam();
    settings.writeBlockSize = 16;
    settings.defaultStation = 1;
    settings.retryLimit = 1;
    settings.writeMode = 2;
    freshDriver(&settings);
    RegistCallBackFuncIntf(writeDone, nullptr);
    writesDone = writesGivenUp = 0;
    InMemoryStation station({1, 2, 3}, 200);
    int values = 0, longestQueue = 0;
    long pages = 0;
    const int total = exchanges();
    for (int i = 0; i < total; ++i) {
        actAsPanels(i);
        exchange(i, &station);
        longestQueue = qMax(longestQueue, PLC_driver.writeList.size() + PLC_driver.onceReadList.size());
        if (i == warmUp) {
            values = PLC_driver.extendList.size();
            pages = residentPages();
        }
        const char *broken = i % 100 == 0 ? violatedInvariant() : nullptr;
        ASSERT_EQ(broken, nullptr) << "exchange " << i;
    }
    EXPECT_GT(writesDone, total / 20);
    EXPECT_GT(writesGivenUp, 0);
    EXPECT_LE(longestQueue, 500) << "places that are written and read, not times";
    EXPECT_EQ(PLC_driver.extendList.size(), values);
    const long now = residentPages();
    EXPECT_TRUE(!MEASURES_MEMORY || now <= pages + pages / 100) << now << " pages instead of " << pages;
    std::printf("%d exchanges, %d writes done, %d given up, %ld resident pages, %ld after the first %d\n", total, writesDone,
                writesGivenUp, now, pages, warmUp);
}

INSTANTIATE_TEST_SUITE_P(Image, LongRun, testing::Bool(), [](const auto &mode) { return mode.param ? "PerStation" : "Shared"; });

} // namespace
