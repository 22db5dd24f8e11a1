// SPDX-License-Identifier: MIT
// The write queue, one-shot reads, and the grouping of the poll list.
#include "driver_fixture.h"

#include <climits>

typedef DriverFixture Queues;

namespace {

int addWrite(const RW_VAR &var, int mode = modbus_driver::QueueMerged)
{
    RW_VAR copy = var;
    return AddListWriteVar(&copy, mode);
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
    const RW_VAR place = access(Registers, 0, 1, "0100");
    EXPECT_EQ(addWrite(place), 1);
    EXPECT_EQ(addWrite(place), 2) << "the head is never merged";
    const RW_VAR others[] = {access(Registers, 0, 1, "", 2), access(RegisterBit, 0, 1), access(Registers, 1, 1),
                             access(Registers, 0, 2)};
    int count = 2;
    for (const RW_VAR &other : others)
        EXPECT_EQ(addWrite(other), ++count) << listed(QList<RW_VAR>() << other);
    addWrite(access(Registers, 0, 1, "0200"), modbus_driver::QueueAsIs);
    EXPECT_EQ(addWrite(access(Registers, 0, 1, "0300")), 7);
    EXPECT_EQ(hex(PLC_driver.writeList.at(0).data), "0100");
    EXPECT_EQ(hex(PLC_driver.writeList.at(1).data), "0300") << "the first match is overwritten";
    EXPECT_EQ(hex(PLC_driver.writeList.at(6).data), "0200") << "and no other";
}

TEST_F(Queues, FullQueuesDropButQueueAsIsDoesNot)
{
    RW_VAR read = onceRead(Registers, "0", 1);
    for (int i = 0; i < 1100; ++i) {
        EXPECT_EQ(addWrite(access(Registers, i, 1)), qMin(i + 1, 1024));
        read.dataLength = 1;
        read.addressText = QString::number(i);
        EXPECT_EQ(AddListOnceReadVar(&read, 0), qMin(i + 1, 1024));
    }
    EXPECT_EQ(addWrite(access(Registers, 5000, 1), 1), 1025);
    EXPECT_EQ(AddListOnceReadVar(&read, 1), 1025);
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
        {"negative block", -3, Registers, "0", 500, "5:0*500", "5:0*500"},
        {"nothing asked", 10, Registers, "0", 0, "", "5:0*0"},
        {"less than nothing", 10, Coils, "7", -20, "", "0:0*-1"},
        {"unknown area keeps its own address", 10, 9, "50", 2, "9:-7*2", "9:-7*2"},
        {"huge length", 0, Coils, "7", INT_MAX, "0:0*268435457", "0:0*268435457"},
    };
    for (const auto &[what, block, area, address, length, blocks, left] : rows) {
        SCOPED_TRACE(what);
        PLC_driver.onceReadList.clear();
        settings.writeBlockSize = block;
        RW_VAR var = onceRead(area, address, length);
        var.subIndex = var.aux = 5;
        AddListOnceReadVar(&var, 0);
        EXPECT_EQ(listed(PLC_driver.onceReadList), blocks);
        EXPECT_EQ(listed(QList<RW_VAR>() << var), left);
        EXPECT_EQ(var.subIndex, 0);
        EXPECT_EQ(var.aux, 0);
    }
    settings.writeBlockSize = 1;
    RW_VAR var = onceRead(Registers, "0", INT_MAX);
    EXPECT_EQ(AddListOnceReadVar(&var, 0), 1024);
    EXPECT_EQ(listed(QList<RW_VAR>() << var), "5:2147483646*1") << "the last block, also where the queue is full";
}

TEST_F(Queues, OneShotReadsAreNotQueuedTwiceByOneItem)
{
    settings.defaultStation = 4;
    RW_VAR read = onceRead(Registers, "0", 15), again = read, other = onceRead(Registers, "0", 15, 2), many = read,
           bad = onceRead(InputBit, "3", 1);
    EXPECT_EQ(AddListOnceReadVar(&read, 0), 2);
    EXPECT_EQ(AddListOnceReadVar(&again, 0), 2);
    EXPECT_EQ(AddListOnceReadVar(&other, 0), 4);
    settings.multiStation = 1;
    EXPECT_EQ(AddListOnceReadVar(&many, 0), 6) << "another station's";
    EXPECT_EQ(listed(PLC_driver.onceReadList), "4/5:0*10 4/5:10*5 4/5:0*10 4/5:10*5 5:0*10 5:10*5");
    RW_VAR shorter = onceRead(Registers, "0", 9), inputs = onceRead(InputRegisters, "0", 10);
    EXPECT_EQ(AddListOnceReadVar(&shorter, 0), 7) << "another length";
    EXPECT_EQ(AddListOnceReadVar(&inputs, 0), 8) << "another area";
    bad.aux = 5;
    EXPECT_EQ(AddListOnceReadVar(&bad, 0), 0);
    EXPECT_EQ(listed(QList<RW_VAR>() << bad) + origin(bad), "2:-7*11 0 0 0 0 0 5  3") << "the host's record is left alone";
}

TEST_F(Queues, NeighboursShareARequest)
{
    const Rows<Text, int, int, Text, Text> rows = {
        {"a gap within the block", 0, 10, "5:8*2 5:0*2 5:20*1 5:5*2", "5:0*10 5:20*1"},
        {"one inside another", 0, 10, "5:0*10 5:3*2", "5:0*10"},
        {"ends inside, starts outside", 0, 10, "5:0*10 5:3*8", "5:0*10 5:3*8"},
        {"coils in whole bytes", 0, 10, "0:3*4 0:10*2 0:100*1", "0:0*2 0:96*1"},
        {"bits of a register", 0, 10, "3:10.5*3 3:10.15*2", "5:10*2"},
        {"a run longer than a block", 0, 32, "0:13*500", "0:8*33 0:264*32"},
        {"registers longer than a block", 0, 10, "5:0*25", "5:0*10 5:10*10 5:20*5"},
        {"the order of areas", 0, 10, "5:0*1 0:0*1 6:0*2 1:0*1 7:4*2", "0:0*1 1:0*1 4:0*2 5:0*6"},
        {"nothing usable", 0, 10, "9:0*1 2:5*1 5:-1*1", ""},
        {"no limit, no merging", 0, 0, "5:0*300 5:300*1 5:290*10 5:301*0", "5:0*300 5:300*1 5:301*0"},
        {"negative block is no limit", 0, -1, "5:0*300 5:300*1", "5:0*300 5:300*1"},
        {"an empty variable", 0, 10, "5:4*0", "5:4*0"},
        {"the same address twice", 0, 10, "5:4*1 5:4*3", "5:4*3"},
        {"no count passes a table", 0, 0, "4:0*2147483647", "4:0*65536"},
        {"of one station each", 1, 10, "5:0*2 2/5:0*2 5:4*2", "5:0*6 2/5:0*2"},
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

TEST_F(Queues, PolledRequestsCarryTheTemplate)
{
    settings.remoteMode = 3;
    VAR_ITEM item;
    item.area = Registers;
    item.count = 1;
    item.addressText = QString::number(7);
    item.tagText = QString::fromLatin1("tag");
    QList<VAR_ITEM> items = QList<VAR_ITEM>() << item;
    ReCreatReadVarList(&items);
    EXPECT_EQ(origin(PLC_driver.readList.at(0)), "0 -1 0 3 2 0 0 tag 7");
}

TEST_F(Queues, OnlyARealRebuildStartsThePassAfresh)
{
    poll("5:0*1");
    settings.cycleDone = PLC_driver.cyclicDone = 1;
    EXPECT_EQ(poll(""), 0);
    EXPECT_EQ(settings.cycleDone + PLC_driver.cyclicDone, 2);
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
    poll("5:0*1");
    EXPECT_EQ(settings.cycleDone + PLC_driver.cyclicDone, 0);
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
        {"the first one is", &WordVarReCreat, neighbours, 10, 0, 1, "5:90*2 5:0*1"},
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
}

TEST_F(Queues, RunsAreSplitIntoBlocks)
{
    const Rows<int, int, Text, Text> rows = {
        {10, 10, "5:100*99", "5:100*99"},
        {25, 10, "5:100*10 5:110*10 5:120*5", "5:120*5"},
        {24, 0, "5:100*24", "5:100*24"},
        {-2, -3, "5:100*99", "5:100*99"},
    };
    for (const auto &[length, limit, blocks, left] : rows) {
        QList<RW_VAR> list;
        RW_VAR var = access(Registers, 100, 99);
        WhetherGroup(length, limit, &var, &list);
        EXPECT_EQ(listed(list), blocks) << length;
        EXPECT_EQ(listed(QList<RW_VAR>() << var), left) << length;
    }
}
