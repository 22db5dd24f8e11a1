// SPDX-License-Identifier: MIT
// The write queue, one-shot reads, and the grouping of the poll list.
#include "driver_fixture.h"

#include <climits>

using namespace modbus_driver;

typedef DriverFixture Queues;

namespace {

RW_VAR onceRead(int area, const char *address, int length)
{
    RW_VAR var = access(area, -7, length);
    var.addressText = QString::fromLatin1(address);
    var.subIndex = var.aux = 5;
    return var;
}

} // namespace

TEST_F(Queues, FullQueuesDropButQueueAsIsDoesNot)
{
    RW_VAR read = onceRead(Registers, "0", 1), made = access(Registers, 0, 1);
    for (int i = 0; i < 1100; ++i) {
        made.startAddress = i;
        EXPECT_EQ(AddListWriteVar(&made, QueueMerged), qMin(i + 1, 1024));
        read.addressText = QString::number(i);
        EXPECT_EQ(AddListOnceReadVar(&read, QueueMerged), qMin(i + 1, 1024));
    }
    made = access(Registers, 7, 1, "0700");
    EXPECT_EQ(AddListWriteVar(&made, QueueAsIs), 1025);
    EXPECT_EQ(AddListOnceReadVar(&read, QueueAsIs), 1025);
    EXPECT_EQ(AddListWriteVar(&made, QueueMerged), 1025);
    EXPECT_EQ(hex(PLC_driver.writeList.at(7).data), "0700") << "a full queue still merges";
}

TEST_F(Queues, OneShotReadsInBlocks)
{
    settings.defaultStation = 4;
    const Rows<Text, int, int, Text, int, Text, Text> rows = {
        {"coils in bytes", 2, Coils, "13", 30, "4/0:8*2 4/0:24*2 4/0:40*1", "4/0:40*1"},
        {"no limit", 0, Registers, "0", 500, "4/5:0*500", "4/5:0*500"},
        {"less than nothing", 10, Coils, "7", -20, "", "4/0:0*-1"},
        {"no address", 10, InputBit, "3", 1, "", "2:-7*1"},
        {"unknown area keeps its own address", 10, 9, "50", 2, "4/9:-7*2", "4/9:-7*2"},
        {"huge length", 0, Coils, "7", INT_MAX, "4/0:0*268435457", "4/0:0*268435457"},
    };
    for (const auto &[what, block, area, address, length, blocks, left] : rows) {
        SCOPED_TRACE(what);
        PLC_driver.onceReadList.clear();
        settings.writeBlockSize = block;
        RW_VAR var = onceRead(area, address, length);
        AddListOnceReadVar(&var, QueueMerged);
        EXPECT_EQ(listed(PLC_driver.onceReadList), blocks);
        EXPECT_EQ(listed(var), left);
        EXPECT_EQ(var.subIndex + var.aux, var.startAddress == -7 && area != 9 ? 10 : 0);
    }
    settings.writeBlockSize = 1;
    RW_VAR var = onceRead(Registers, "0", INT_MAX);
    EXPECT_EQ(AddListOnceReadVar(&var, QueueMerged), 1024);
    EXPECT_EQ(listed(var), "4/5:2147483646*1") << "the last block, also where the queue is full";
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
        {"no limit, no merging", 0, -1, "5:0*300 5:300*1 5:290*10 5:301*0", "5:0*300 5:300*1 5:301*0"},
        {"the same address twice", 0, 10, "5:4*1 5:4*3", "5:4*3"},
        {"no address", 0, 10, "5:-1*1 5:4*1 3:4*1", "5:4*1"},
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
    poll("5:7*1");
    EXPECT_EQ(origin(PLC_driver.readList.at(0)), "0 -1 0 3 2 0 0 tag 7");
    EXPECT_EQ(settings.cycleDone + PLC_driver.cyclicDone, 0);
    settings.cycleDone = PLC_driver.cyclicDone = 1;
    EXPECT_EQ(poll(""), 0);
    EXPECT_EQ(settings.cycleDone + PLC_driver.cyclicDone, 2);
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
}

TEST_F(Queues, StepsOnFinishedRecords)
{
    typedef QList<RW_VAR> List;
    const List runs = List() << access(Registers, 3, 4) << access(Registers, -9, 1) << access(Registers, 12, 4)
                             << access(Registers, 40, 9) << access(Registers, 12, 5);
    const Rows<Text, int (*)(List *, int, int), int, int, int, Text> rows = {
        {"registers", &WordVarReCreat, 16, 1, 4, "5:90*1 5:-9*16 5:12*5 5:40*9"},
        {"bits", &BitVarReCreat, 24, 1, 4, "5:90*1 5:-16*3 5:8*2 5:40*2"},
        {"no limit", &WordVarReCreat, 0, 1, 6, "5:90*1 5:-9*1 5:3*4 5:12*4 5:12*5 5:40*9"},
        {"an entry that is not there is not widened", &WordVarReCreat, 16, 90, 93, "5:90*1 5:-9*1 5:12*4 5:40*9"},
        {"nor one ahead of the first", &WordVarReCreat, 16, -1, 2, "5:90*5 5:-9*1 5:12*4 5:40*9"},
        {"the entry that the count tells of is", &WordVarReCreat, 16, 0, 3, "5:90*16 5:-9*5 5:12*4 5:40*9"},
    };
    for (const auto &[what, step, limit, count, result, requests] : rows) {
        SCOPED_TRACE(what);
        PLC_driver.readList = List() << access(Registers, 90, 1);
        List sorted = runs;
        Bubble_Sort(&sorted);
        EXPECT_EQ(step(&sorted, limit, count), result);
        EXPECT_EQ(listed(PLC_driver.readList), requests);
    }
    RW_VAR run = access(Registers, 100, 99);
    List list;
    WhetherGroup(10, 10, &run, &list);
    WhetherGroup(25, 10, &run, &list);
    WhetherGroup(1, 0, &run, &list);
    EXPECT_EQ(listed(list), "5:100*99 5:100*10 5:110*10 5:120*5 5:120*1") << "the host's record is left at the last block";
}
