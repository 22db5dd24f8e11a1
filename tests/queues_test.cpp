// SPDX-License-Identifier: MIT
// The write queue, one-shot reads, and the grouping of the poll list.
#include "driver_fixture.h"

#include <climits>

using namespace modbus_driver;

typedef DriverFixture Queues;

namespace {

int addWrite(RW_VAR var, int mode = QueueMerged)
{
    return AddListWriteVar(&var, mode);
}

RW_VAR onceRead(int area, const char *address, int length, int hostId = 1)
{
    RW_VAR var = access(area, -7, length);
    var.addressText = QString::fromLatin1(address);
    var.hostId = hostId;
    return var;
}

} // namespace

TEST_F(Queues, WritesMergeIntoTheFirstOfTheSamePlaceButTheHead)
{
    const Rows<Text, RW_VAR, int, Text> rows = {
        {"the head", access(Registers, 0, 1, "01"), QueueMerged, "01"},
        {"the head is never merged", access(Registers, 0, 1, "02"), QueueMerged, "01 02"},
        {"another station", access(Registers, 0, 1, "03", 2), QueueMerged, "01 02 03"},
        {"another area", access(RegisterBit, 0, 1, "04"), QueueMerged, "01 02 03 04"},
        {"another address", access(Registers, 1, 1, "05"), QueueMerged, "01 02 03 04 05"},
        {"another length", access(Registers, 0, 2, "06"), QueueMerged, "01 02 03 04 05 06"},
        {"as it is", access(Registers, 0, 1, "07"), QueueAsIs, "01 02 03 04 05 06 07"},
        {"the first one is overwritten", access(Registers, 0, 1, "08"), QueueMerged, "01 08 03 04 05 06 07"},
    };
    for (const auto &[what, var, mode, values] : rows) {
        const int queuedNow = addWrite(var, mode);
        EXPECT_EQ(queuedNow, PLC_driver.writeList.size());
        std::string queued;
        for (const RW_VAR &entry : PLC_driver.writeList)
            queued += (queued.empty() ? "" : " ") + hex(entry.data);
        EXPECT_EQ(queued, values) << what;
    }
}

TEST_F(Queues, FullQueuesDropButQueueAsIsDoesNot)
{
    RW_VAR read = onceRead(Registers, "0", 1);
    for (int i = 0; i < 1100; ++i) {
        EXPECT_EQ(addWrite(access(Registers, i, 1)), qMin(i + 1, 1024));
        read.addressText = QString::number(i);
        EXPECT_EQ(AddListOnceReadVar(&read, QueueMerged), qMin(i + 1, 1024));
    }
    EXPECT_EQ(addWrite(access(Registers, 5000, 1), QueueAsIs), 1025);
    EXPECT_EQ(AddListOnceReadVar(&read, QueueAsIs), 1025);
    EXPECT_EQ(addWrite(access(Registers, 7, 1, "0700")), 1025);
    EXPECT_EQ(hex(PLC_driver.writeList.at(7).data), "0700") << "a full queue still merges";
}

TEST_F(Queues, OneShotReadsInBlocks)
{
    const Rows<Text, int, int, Text, int, Text, Text> rows = {
        {"coils in bytes", 2, Coils, "13", 30, "0:8*2 0:24*2 0:40*1", "0:40*1"},
        {"bits of registers", 1, RegisterBit, "10.5", 20, "5:10*1 5:11*1", "5:11*1"},
        {"bits in one input register", 10, InputBit, "10.5", 3, "4:10*1", "4:10*1"},
        {"32-bit values", 2, Pairs, "100", 5, "5:100*2 5:102*2 5:104*1", "5:104*1"},
        {"full last block", 2, InputRegisters, "100", 4, "4:100*2 4:102*2", "4:102*2"},
        {"no limit", 0, Registers, "0", 500, "5:0*500", "5:0*500"},
        {"less than nothing", 10, Coils, "7", -20, "", "0:0*-1"},
        {"unknown area keeps its own address", 10, 9, "50", 2, "9:-7*2", "9:-7*2"},
        {"huge length", 0, Coils, "7", INT_MAX, "0:0*268435457", "0:0*268435457"},
    };
    for (const auto &[what, block, area, address, length, blocks, left] : rows) {
        SCOPED_TRACE(what);
        PLC_driver.onceReadList.clear();
        settings.writeBlockSize = block;
        RW_VAR var = onceRead(area, address, length);
        var.subIndex = 5;
        AddListOnceReadVar(&var, 0);
        EXPECT_EQ(listed(PLC_driver.onceReadList), blocks);
        EXPECT_EQ(listed(QList<RW_VAR>() << var), left);
        EXPECT_EQ(var.subIndex, 0);
    }
    settings.writeBlockSize = 1;
    RW_VAR var = onceRead(Registers, "0", INT_MAX);
    EXPECT_EQ(AddListOnceReadVar(&var, 0), 1024);
    EXPECT_EQ(listed(QList<RW_VAR>() << var), "5:2147483646*1") << "the last block, also where the queue is full";
}

TEST_F(Queues, OneShotReadsAreNotQueuedTwiceByOneItem)
{
    settings.defaultStation = 4;
    const Rows<Text, int, RW_VAR, int> rows = {
        {"in blocks", 0, onceRead(Registers, "0", 15), 2},         {"again", 0, onceRead(Registers, "0", 15), 2},
        {"another host's", 0, onceRead(Registers, "0", 15, 2), 4}, {"another station's", 1, onceRead(Registers, "0", 15), 6},
        {"another length", 1, onceRead(Registers, "0", 9), 7},     {"another area", 1, onceRead(InputRegisters, "0", 10), 8},
        {"no address", 1, onceRead(InputBit, "3", 1), 0},
    };
    for (const auto &[what, perStation, read, queued] : rows) {
        settings.multiStation = perStation;
        RW_VAR var = read;
        var.aux = 5;
        EXPECT_EQ(AddListOnceReadVar(&var, QueueMerged), queued) << what;
        EXPECT_EQ(var.aux, queued ? 0 : 5) << what;
    }
    EXPECT_EQ(listed(PLC_driver.onceReadList), "4/5:0*10 4/5:10*5 4/5:0*10 4/5:10*5 5:0*10 5:10*5 5:0*9 4:0*10");
}

TEST_F(Queues, NeighboursShareARequest)
{
    const Rows<Text, int, int, Text, Text> rows = {
        {"a gap within the block", 0, 10, "5:8*2 5:0*2 5:20*1 5:5*2", "5:0*10 5:20*1"},
        {"one inside another", 0, 10, "5:0*10 5:3*2", "5:0*10"},
        {"ends inside, starts outside", 0, 10, "5:0*10 5:3*8", "5:0*10 5:3*8"},
        {"coils in whole bytes", 0, 10, "0:3*4 0:10*2 0:100*1", "0:0*2 0:96*1"},
        {"bits of a register", 0, 10, "3:10.5*3 3:10.15*2", "5:10*2"},
        {"the order of areas", 0, 10, "5:0*1 0:0*1 6:0*2 1:0*1 7:4*2", "0:0*1 1:0*1 4:0*2 5:0*6"},
        {"no limit, no merging", 0, 0, "5:0*300 5:300*1 5:290*10 5:301*0", "5:0*300 5:300*1 5:301*0"},
        {"the same address twice", 0, 10, "5:4*1 5:4*3", "5:4*3"},
        {"no count passes a table", 0, 0, "4:0*2147483647", "4:0*65536"},
        {"255 of one area is 0 of the next", 1, 10, "255/0:16*1 0/1:0*1", "0/1:0*3"},
        {"an unknown area", 1, 10, "9:0*25", "9:0*10 9:10*10 9:20*5"},
        {"bits in blocks of whole bytes", 1, 10, "0:27*200", "0:24*10 0:104*10 0:184*6"},
        {"what asks for nothing opens no group", 1, 10, "2/5:0*0 3:1*1 5:-1*1 5:0*1 2/5:0*1", "5:0*1 2/5:0*1"},
        {"equal addresses, the newest first", 1, 0, "5:0*2 5:0*3", "5:0*3"},
        {"the newest is the shorter", 1, 0, "5:0*3 5:0*2", "5:0*2 5:0*3"},
    };
    for (const auto &[what, perStation, block, items, requests] : rows) {
        SCOPED_TRACE(what);
        settings.multiStation = perStation;
        settings.writeBlockSize = block;
        const int count = poll(items);
        EXPECT_EQ(listed(PLC_driver.readList), requests);
        EXPECT_EQ(count, PLC_driver.readList.size());
    }
}

TEST_F(Queues, RebuildStartsThePassAfreshUnlessTheListIsEmpty)
{
    settings.remoteMode = 3;
    settings.cycleDone = PLC_driver.cyclicDone = 1;
    VAR_ITEM item;
    item.area = Registers;
    item.count = 1;
    item.addressText = QString::number(7);
    item.tagText = QString::fromLatin1("tag");
    QList<VAR_ITEM> items = QList<VAR_ITEM>() << item;
    ReCreatReadVarList(&items);
    EXPECT_EQ(origin(PLC_driver.readList.at(0)), "0 -1 0 3 2 0 0 tag 7");
    EXPECT_EQ(settings.cycleDone + PLC_driver.cyclicDone, 0);
    settings.cycleDone = PLC_driver.cyclicDone = 1;
    EXPECT_EQ(poll(""), 0);
    EXPECT_EQ(settings.cycleDone + PLC_driver.cyclicDone, 2);
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
}

TEST_F(Queues, StepsOnFinishedRecords)
{
    const QList<RW_VAR> neighbours = QList<RW_VAR>() << access(Registers, 0, 1) << access(Registers, 1, 1);
    const QList<RW_VAR> bits = QList<RW_VAR>() << access(Coils, 3, 4) << access(Coils, 12, 4) << access(Coils, 40, 9);
    typedef QList<RW_VAR> List;
    const Rows<Text, int (*)(List *, int, int), List, int, int, int, Text> rows = {
        {"registers", &WordVarReCreat, neighbours, 10, 1, 2, "5:90*1 5:0*2"},
        {"an entry that is not there is not widened", &WordVarReCreat, neighbours, 10, 90, 91, "5:90*1 5:0*1"},
        {"nor one ahead of the first", &WordVarReCreat, neighbours, 10, -1, 0, "5:90*1 5:0*1"},
        {"bits", &BitVarReCreat, bits, 16, 1, 3, "5:90*1 0:0*2 0:40*2"},
        {"no limit", &WordVarReCreat, neighbours, 0, 1, 3, "5:90*1 5:0*1 5:1*1"},
    };
    for (const auto &[what, step, runs, limit, count, result, requests] : rows) {
        SCOPED_TRACE(what);
        PLC_driver.readList = QList<RW_VAR>() << access(Registers, 90, 1);
        List sorted = runs;
        EXPECT_EQ(step(&sorted, limit, count), result);
        EXPECT_EQ(listed(PLC_driver.readList), requests);
    }
    QList<RW_VAR> list = QList<RW_VAR>() << access(Registers, 3, 1) << access(Registers, -1, 1) << access(Registers, 3, 2);
    QList<RW_VAR> two = list.mid(0, 2);
    Bubble_Sort(&list);
    Bubble_Sort(&two);
    EXPECT_EQ(listed(list + two), "5:-1*1 5:3*1 5:3*2 5:-1*1 5:3*1") << "ascending, equal ones in their order";
    RW_VAR run = access(Registers, 100, 99);
    list.clear();
    WhetherGroup(10, 10, &run, &list);
    WhetherGroup(25, 10, &run, &list);
    EXPECT_EQ(listed(list << run), "5:100*99 5:100*10 5:110*10 5:120*5 5:120*5") << "the host's record is left at the last block";
}
