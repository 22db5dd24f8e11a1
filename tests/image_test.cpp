// SPDX-License-Identifier: MIT
// The register image: packing, storing replies, host reads and writes, in both image modes. sequences_test.cpp asks what
// usual values come to; here are the edges and the odd cases.
#include "driver_fixture.h"

#include <climits>
#include <functional>

typedef DriverFixture Image;

namespace {

/// Puts a read in flight, ahead of `behind`, and stores a reply without judging it. The reply's data are var's.
void store(const RW_VAR &var, const QList<Protocol> &behind = QList<Protocol>())
{
    Protocol request;
    request.replyHeaderLength = 9;
    request.replyDataLength = var.area == Coils || var.area == Inputs ? var.dataLength : 2 * var.dataLength;
    request.var = var;
    PLC_driver.pendingList = QList<Protocol>() << request << behind;
    QByteArray reply = QByteArray(9, '\xEE') + var.data;
    SaveToLocalDataErea(&reply);
}

std::string record(int index)
{
    return hex(PLC_driver.extendList.at(index).value);
}

void addRecord(int address)
{
    PLC_driver.extendList.append(EXTENDVAR());
    PLC_driver.extendList.last().station = 1;
    PLC_driver.extendList.last().area = Registers;
    PLC_driver.extendList.last().address = address;
}

enum Mode { Shared = 0, PerStation = 1, Both = 2 };
enum Change { unchanged, written, replied };

} // namespace

TEST_F(Image, WhatThePanelShowsAfterwards)
{
    const Rows<Text, Mode, Change, RW_VAR, int, Text, int, Text> rows = {
        {"coils from inside a byte", Both, unchanged, {}, Coils, "3", 8, "0101010000000001"},
        {"an odd register is left out", Both, unchanged, {}, Pairs, "1", 3, "05000380"},
        {"one register is the low word", Shared, unchanged, {}, Pairs, "0", 1, "0380"},
        {"one register is nothing", PerStation, unchanged, {}, Pairs, "0", 1, ""},

        {"coils across bytes", Both, written, access(Coils, 6, 3, "010101"), Coils, "6", 4, "01010100"},
        {"coils below 0", Both, written, access(Coils, -2, 3, "000001"), Coils, "0", 3, "010001"},
        {"any byte but 1 clears", Both, written, access(Coils, 2, 4, "0200FF01"), Coils, "1", 6, "000000000100"},
        {"coils stop with the data", Both, written, access(Coils, 1, 8, "01"), Coils, "0", 5, "0001010101"},
        {"more coils than asked", Both, written, access(Coils, 2, 1, "0000"), Coils, "2", 2, "0001"},
        {"bits of a register", Shared, written, access(RegisterBit, 73, 2, "0101"), Registers, "4", 1, "FF06"},
        {"the start picks the bit", PerStation, written, access(RegisterBit, 73, 2, "0101"), Registers, "4", 1, "FF02"},
        {"bits across registers", Shared, written, access(RegisterBit, 79, 2, "0101"), Registers, "4", 2, "FF80FF00"},
        {"one bit of two registers", PerStation, written, access(RegisterBit, 79, 2, "0101"), Registers, "4", 2, "FF80FF80"},
        {"the very first bit", Both, written, access(RegisterBit, 0, 1, "00"), Registers, "0", 1, "00C0"},
        {"a byte of 2 clears", Shared, written, access(RegisterBit, 64, 1, "02"), Registers, "4", 1, "FE00"},
        {"a byte of 2 changes nothing", PerStation, written, access(RegisterBit, 64, 1, "02"), Registers, "4", 1, "FF00"},
        {"bits stop with the data", Shared, written, access(RegisterBit, 79, 2, "01"), Registers, "4", 2, "FF80FF00"},
        {"registers stop with the bits", PerStation, written, access(RegisterBit, 71, 10, "000000000000000000"), Registers, "4",
         2, "7F00FF00"},
        {"more bits than asked", Both, written, access(RegisterBit, 64, 1, "0000"), Registers, "4", 1, "FE00"},
        {"a register without both bytes", Both, written, access(Registers, 4, 2, "AABBCC"), Registers, "4", 2, "AABBFF00"},
        {"more registers than asked", Both, written, access(Registers, 4, 1, "34127856"), Registers, "4", 2, "3412FF00"},
        {"32-bit values", Both, written, access(Pairs, 4, 4, "0102030405060708"), Registers, "4", 4, "0304010207080506"},
        {"an odd register", Both, written, access(Pairs, 4, 3, "785634129999"), Registers, "4", 3, "34127856FF00"},
        {"without all bytes", Both, written, access(Pairs, 4, 4, "78563412999999"), Registers, "4", 3, "34127856FF00"},
        {"half a value", Both, written, access(Pairs, 4, 1, "00000000"), Registers, "4", 2, "FF00FF00"},
        {"more values than asked", Both, written, access(Pairs, 4, 2, "7856341299999999"), Registers, "4", 3, "34127856FF00"},

        {"a reply with its last register cut", Shared, replied, access(Registers, 1, 3, "0A0B0C0D0E"), Registers, "1", 3,
         "0B0A0D0C07E0"},
        {"a reply for no table", Shared, replied, access(InputPairs, 0, 1, "FFFF"), InputRegisters, "0", 1, "0204"},
        {"a reply past the end", Shared, replied, access(Registers, 65535, 2, "01020304"), Registers, "65535", 1, "0201"},
        {"bits from inside a byte on", Shared, replied, access(Coils, 12, 1, "FF"), Coils, "7", 3, "000101"},
        {"bits past the end", Shared, replied, access(Coils, 65536, 9, "01FF"), Coils, "65536", 1, "01"},
        {"fewer bytes than announced", Shared, replied, access(Coils, 40, 2, "FF"), Coils, "40", 9, "010101010101010100"},
        {"more bytes than announced", Shared, replied, access(Registers, 4, 1, "01020304"), Registers, "4", 2, "0201FF00"},
    };
    for (Mode mode : {Shared, PerStation}) {
        for (const auto &[what, modes, change, var, area, address, count, wanted] : rows) {
            if (modes != mode && modes != Both)
                continue;
            SCOPED_TRACE(testing::Message() << what << ", mode " << mode);
            restart(mode);
            store(access(Coils, 0, 2, "3C84"));
            store(access(Inputs, 8, 2, "8001"));
            store(access(InputRegisters, 0, 2, "04020806"));
            store(access(Registers, 0, 8, "C001 8003 0005 E007 00FF 00FF 00FF 00FF"));
            RW_VAR copy = var;
            if (change == replied)
                store(var);
            else if (change == written)
                WriteDataToLocal(&copy);
            QByteArray out(32, '\x55'); // keeps what is not read
            EXPECT_EQ(GetRegisterData(0, area, QString::fromLatin1(address), 1, out, count), 1);
            const std::string rest(64 - std::string(wanted).size(), '5');
            EXPECT_EQ(hex(out), wanted + rest);
            EXPECT_EQ(PLC_driver.extendList.size(), mode == Shared ? 0 : 14) << "values that are known";
            EXPECT_EQ(PLC_driver.inputBits[0], 0) << "behind the coils";
        }
    }
    EXPECT_EQ(value(InputRegisters, "7", 1, 4) + value(Registers, "0", 1, 2), "00000000") << "another station's are not known";
    EXPECT_EQ(PLC_driver.extendList.size(), 16);
}

// Written and read at and beyond the end; the neighbours of the arrays in the driver object stay as they are.
TEST_F(Image, AccessesAreClippedAtTheEnds)
{
    const Rows<int, Text, int, Text> rows = {
        {Coils, "65543", 3, "01"},
        {Coils, "65544", 1, ""},
        {RegisterBit, "65535.15", 3, "01"},
        {Registers, "65535", 2, "0101"},
        {Registers, "65536", 1, ""},
        {Pairs, "65534", 4, "01010101"},
        {Pairs, "65535", 2, ""},
        {Pairs, "65535", 1, ""},
        {Registers, "2147483647", 9, ""},
        {Coils, "2147483647", INT_MAX, ""},
    };
    settings.writeMode = 0;
    for (const auto &[area, address, count, wanted] : rows) {
        write(area, address, count, hex(QByteArray(64, '\x01')));
        EXPECT_EQ(value(area, address, count), wanted) << address;
    }
    EXPECT_EQ(PLC_driver.inputBits[0], 0) << "behind the coils";
    EXPECT_EQ(PLC_driver.inputRegisters[65535], 0) << "ahead of the holding registers";
}

TEST_F(Image, WriteHalfTakesTheRegisterWithTheBitChanged)
{
    const Rows<Text, int, Text, int, int, Text, Text> rows = {
        {"any other value leaves it", 35, "02", -1, 1, "00F7", "00F7"},
        {"no bit leaves it", 35, "", -1, 1, "1234", "1234"},
        {"the last of several registers", 35, "00", -1, 3, "1234567834FF", "34F7"},
        {"without a register 0 is taken", 35, "01", -1, 1, "80", "0008"},
        {"not the read half", 35, "01", 0, 1, "0102", "3030"},
    };
    for (int perStation : {0, 1}) {
        restart(perStation);
        for (const auto &[what, bit, data, subIndex, registers, received, sent] : rows) {
            PLC_driver.writeList = QList<RW_VAR>() << access(RegisterBit, bit, 1, data);
            RW_VAR read = access(RegisterBit, 2, registers, received);
            read.subIndex = subIndex;
            Protocol writeHalf;
            writeHalf.frame = bytes("0000 0000 0006 01 06 0002 3030");
            store(read, QList<Protocol>() << writeHalf);
            EXPECT_EQ(hex(PLC_driver.pendingList.at(1).frame), hex("0000 0000 0006 01 06 0002") + sent) << what;
        }
        EXPECT_EQ(value(Registers, "2", 1), "0201") << "the last one read";
    }
}

TEST_F(Image, LastRecordOfAStoreIsStretchedToTheWholeData)
{
    settings.multiStation = 1;
    settings.writeMode = 0;
    store(access(Registers, 10, 3, "010203"));
    EXPECT_EQ(record(0) + "," + record(1) + "," + record(2), "0201,,000000000000") << "a byte of the second was missing";
    store(access(Coils, 8, 3, "AABBCC"));
    EXPECT_EQ(record(3) + "," + record(5), "AA,CC0000");
    store(access(Inputs, 8, 3, "AA"));
    EXPECT_EQ(record(7) + "," + record(8), ",000000") << "their bytes were missing";
    PLC_driver.extendList[1].value = bytes("FFFFFFFF");
    store(access(Registers, 10, 2, "01020304"));
    EXPECT_EQ(record(1), "04030000");
    write(Registers, "11", 1, "3412");
    write(Coils, "25", 1, "01");
    EXPECT_EQ(record(1) + "," + record(5), "3412,CE") << "a write leaves only the value";
    store(access(Registers, 10, 0));
    EXPECT_EQ(record(0), "") << "a store that touches no record does it to the first";
    PLC_driver.extendList[3].value.clear();
    write(RegisterBit, "10.0", 1, "01");
    write(Coils, "8", 1, "01");
    EXPECT_EQ(value(Registers, "10", 1) + value(InputBit, "10.0", 1) + value(Coils, "8", 1), "00000000")
        << "bits of values that are not known stay so";
}

TEST_F(Image, RecordsAreFoundWhoeverMadeThem)
{
    QList<EXTENDVAR> &list = PLC_driver.extendList;
    const auto fill = [&](int first, int step) {
        list.clear();
        for (int i = 0; i < 306; ++i)
            addRecord(first + step * i);
    };
    typedef std::function<void()> Change;
    const Rows<Text, Change, int, int, int> rows = {
        {"appended by the host", [&] { fill(0, 1); }, Registers, 302, 302},
        {"the first of two", [&] { addRecord(9); }, Registers, 9, 9},
        {"a second one behind its neighbour", [&] { addRecord(8), addRecord(305); }, Registers, 305, 305},
        {"another area's", [] {}, InputRegisters, 7, 309},
        {"taken out", [&] { list.removeLast(); }, InputRegisters, 7, 309},
        {"cleared and filled again to the same size", [&] { fill(5000, -1); }, Registers, 4990, 10},
        {"changed in place", [&] { list[10].address = 1; }, Registers, 4990, 306},
        {"the last one", [&] { list.last().address = 77; }, Registers, 77, 306},
        {"two changed places", [&] { qSwap(list[20], list[30]); }, Registers, 4980, 30},
        {"in the middle, where a missing key is doubted", [&] { list[153].address = 78; }, Registers, 78, 153},
        {"the first got the key of another", [&] { list[0].address = 78; }, Registers, 78, 0},
    };
    for (const auto &[what, change, area, address, position] : rows) {
        change();
        EXPECT_EQ(ExtendFindSameVar(1, area, address), position) << what;
    }
    EXPECT_EQ(ExtendFindSameVar(2, Registers, 78), 307) << "another station's";
    list.clear();
    for (int address : {11, 10, 11, 12})
        addRecord(address);
    list[0].value = bytes("AAAA");
    settings.multiStation = 1;
    EXPECT_EQ(value(Registers, "10", 3), "0000AAAA0000") << "a walk keeps to the first record of each key";
}

TEST_F(Image, HostWritesAreQueuedInBlocks)
{
    const Rows<Text, int, int, Text, int, int, Text> rows = {
        {"rest in the last block", 4, Registers, "20", 10, 3, "5:20*4 5:24*4 5:28*2"},
        {"a full last block", 4, Pairs, "20", 8, 2, "7:20*4 7:24*4"},
        {"no limit", 0, Registers, "20", 10, 1, "5:20*10"},
        {"each bit by itself", 4, Coils, "7", 3, 3, "0:7*1 0:8*1 0:9*1"},
        {"bits of a register", 4, RegisterBit, "1.15", 2, 2, "3:31*1 3:32*1"},
        {"nothing to write", 4, Registers, "0", 0, 0, ""},
        {"read-only registers", 4, InputRegisters, "0", 1, 0, ""},
        {"no address", 4, RegisterBit, "0", 1, 0, ""},
        {"an address past 32 bits", 1, Registers, "2147483647", 2, 2, "5:2147483647*1 5:-2147483648*1"},
        {"a count past the table", 0, Registers, "0", INT_MAX, 1, "5:0*65536"},
    };
    for (const auto &[what, block, area, address, count, result, blocks] : rows) {
        PLC_driver.writeList.clear();
        settings.writeBlockSize = block;
        EXPECT_EQ(write(area, address, count, ""), result) << what;
        EXPECT_EQ(listed(PLC_driver.writeList), blocks) << what;
        for (const RW_VAR &entry : PLC_driver.writeList)
            EXPECT_EQ(entry.data.size(), area < InputRegisters ? entry.dataLength : 2 * entry.dataLength);
    }
}

TEST_F(Image, QueuedWriteCarriesItsOriginAndZeroesForWhatIsMissing)
{
    settings.remoteMode = 3;
    QByteArray entered = bytes("010203").append(QByteArray(40, '\x55')), three = QByteArray::fromRawData(entered.data(), 3);
    SetRegisterData(QString::fromLatin1("tag"), Registers, QString::fromLatin1("8"), 6, three, 12, 7, 8);
    entered[0] = 0;
    const RW_VAR var = PLC_driver.writeList.at(0);
    EXPECT_EQ(hex(var.data), "010203" + std::string(34, '0')) << "also when the host's memory is gone";
    EXPECT_EQ(hex(PLC_driver.writeList.at(1).data), "00000000");
    EXPECT_EQ(origin(var), "7 8 1 3 2 0 0 tag 8");
    EXPECT_EQ(value(Registers, "8", 1), "0000") << "the image waits for the request";
    settings.multiStation = 1;
    write(Registers, "8", 2, "", 0, 0, 6);
    EXPECT_EQ(listed(PLC_driver.writeList), "5:8*10 5:18*2 6/5:8*2") << "the default station, while all share one image";
}

TEST_F(Image, WritesShowAtOnceWhenTheStationIsNotAsked)
{
    settings.writeMode = 1;
    EXPECT_EQ(write(Registers, "9", 1, "BC9A"), 1);
    EXPECT_EQ(write(InputRegisters, "8", 1, "3412"), 1) << "read-only, and still no error";
    EXPECT_EQ(value(Registers, "8", 2) + value(InputRegisters, "8", 1), "0000BC9A0000");
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(Image, RepliesOfOddSizes)
{
    store(access(Registers, 10, 40000, QByteArray(160000, '7').constData()));
    EXPECT_EQ(value(Registers, "40009", 2), "77770000") << "longer than any frame, for the announced length decides";
    settings.multiStation = 1;
    store(access(Registers, 0, 70000));
    EXPECT_EQ(PLC_driver.extendList.size(), 65536) << "no reply stores more than a whole table";
}
