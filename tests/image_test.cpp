// SPDX-License-Identifier: MIT
// The register image: packing, storing replies, host reads and writes, in both image modes. What usual values come to
// is asked by sequences_test.cpp; here are the edges and the odd cases.
#include "driver_fixture.h"

#include <climits>

typedef DriverFixture Image;

namespace {

/// Puts a read in flight, with a write behind it if there is one, and stores its reply without judging it.
void store(const RW_VAR &var, int dataBytes, const char *data, const QByteArray &writeHalf = QByteArray(), int header = 9)
{
    Protocol request, behind;
    request.replyHeaderLength = header;
    request.replyDataLength = dataBytes;
    request.var = var;
    behind.frame = writeHalf;
    PLC_driver.pendingList = QList<Protocol>() << request;
    if (!writeHalf.isEmpty())
        PLC_driver.pendingList << behind;
    QByteArray reply = QByteArray(qMax(0, header), '\xEE') + bytes(data);
    SaveToLocalDataErea(&reply);
}

std::string record(int index)
{
    return hex(PLC_driver.extendList.at(index).value);
}

void addRecord(int address)
{
    EXTENDVAR var;
    var.station = 1;
    var.area = Registers;
    var.address = address;
    PLC_driver.extendList.append(var);
}

/// A row that holds in one image mode only, or in both.
enum Mode { Shared = 0, PerStation = 1, Both = 2 };

} // namespace

TEST_F(Image, WhatThePanelReads)
{
    const struct
    {
        const char *what;
        Mode mode;
        int area;
        const char *address;
        int count;
        const char *value;
    } rows[] = {
        {"coils from inside a byte", Both, Coils, "3", 8, "0101010000000001"},
        {"the last input", Both, Inputs, "14", 3, "000101"},
        {"bits of an input register", Both, InputBit, "0.7", 4, "00000001"},
        {"bits across holding registers", Both, RegisterBit, "0.13", 5, "0001010101"},
        {"the first bit of a high byte", Both, RegisterBit, "0.8", 1, "00"},
        {"a 32-bit input", Both, InputPairs, "0", 2, "06080204"},
        {"an odd register is left out", Both, Pairs, "1", 3, "05000380"},
        {"one register is the low word", Shared, Pairs, "0", 1, "0380"},
        {"one register is nothing", PerStation, Pairs, "0", 1, ""},
        {"nothing asked", Both, Registers, "0", 0, ""},
        {"less than nothing", Both, Coils, "0", -1, ""},
        {"no such area", Both, 9, "0", 5, ""},
    };
    for (Mode mode : {Shared, PerStation}) {
        settings.multiStation = mode;
        store(access(Coils, 0, 2), 2, "3884");
        store(access(Inputs, 8, 2), 2, "8001");
        store(access(InputRegisters, 0, 2), 4, "04020806");
        store(access(Registers, 0, 4), 8, "C001 8003 0005 E007");
        for (const auto &row : rows) {
            if (row.mode != mode && row.mode != Both)
                continue;
            EXPECT_EQ(value(row.area, row.address, row.count), row.value) << row.what << ", mode " << mode;
        }
    }
    EXPECT_EQ(PLC_driver.extendList.size(), 10) << "reading known values adds no record";
    EXPECT_EQ(value(InputRegisters, "7", 1, 4), "0000");
    EXPECT_EQ(record(10), "00000000") << "reading an unknown one does";
}

TEST_F(Image, WhatThePanelWrites)
{
    const struct
    {
        const char *what;
        Mode mode;
        RW_VAR write;
        int area;
        const char *address;
        int count;
        const char *value;
    } rows[] = {
        {"coils across bytes", Both, access(Coils, 6, 3, "010101"), Coils, "6", 4, "01010100"},
        {"any byte but 1 clears", Both, access(Coils, 2, 4, "0200FF01"), Coils, "1", 6, "000000000100"},
        {"coils stop with the data", Both, access(Coils, 1, 8, "01"), Coils, "0", 5, "0001010101"},
        {"coils below 0", Both, access(Coils, -2, 3, "000001"), Coils, "0", 3, "010001"},
        {"more coils than asked", Both, access(Coils, 2, 1, "0000"), Coils, "2", 2, "0001"},
        {"bits of a register", Shared, access(RegisterBit, 25, 2, "0101"), Registers, "1", 1, "FF06"},
        {"the start picks the bit", PerStation, access(RegisterBit, 25, 2, "0101"), Registers, "1", 1, "FF02"},
        {"bits across registers", Shared, access(RegisterBit, 31, 2, "0101"), Registers, "1", 2, "FF80FF00"},
        {"the same bit of two registers", PerStation, access(RegisterBit, 31, 2, "0101"), Registers, "1", 2, "FF80FF80"},
        {"a bit cleared", Both, access(RegisterBit, 19, 1, "00"), Registers, "1", 1, "F700"},
        {"the very first bit", Both, access(RegisterBit, 0, 1, "00"), Registers, "0", 1, "FE00"},
        {"the first bit of a high byte", Both, access(RegisterBit, 24, 1, "01"), Registers, "1", 1, "FF01"},
        {"a byte of 2 clears", Shared, access(RegisterBit, 16, 1, "02"), Registers, "1", 1, "FE00"},
        {"a byte of 2 changes nothing", PerStation, access(RegisterBit, 16, 1, "02"), Registers, "1", 1, "FF00"},
        {"bits stop with the data", Shared, access(RegisterBit, 23, 10, "010101010101010101"), Registers, "1", 2, "FFFFFF00"},
        {"registers stop with the bits", PerStation, access(RegisterBit, 23, 10, "000000000000000000"), Registers, "1", 2,
         "7F00FF00"},
        {"a bit below 0", Both, access(RegisterBit, -1, 1, "00"), Registers, "0", 1, "FF00"},
        {"more bits than asked", Both, access(RegisterBit, 16, 1, "0000"), Registers, "1", 1, "FE00"},
        {"a register without both bytes", Both, access(Registers, 4, 2, "AABBCC"), Registers, "4", 2, "AABBFF00"},
        {"registers below 0", Both, access(Registers, -1, 2, "11112222"), Registers, "0", 2, "2222FF00"},
        {"more registers than asked", Both, access(Registers, 4, 1, "34127856"), Registers, "4", 2, "3412FF00"},
        {"32-bit values", Both, access(Pairs, 4, 4, "0102030405060708"), Registers, "4", 4, "0304010207080506"},
        {"an odd register", Both, access(Pairs, 4, 3, "785634129999"), Registers, "4", 3, "34127856FF00"},
        {"a second value without all bytes", Both, access(Pairs, 4, 4, "78563412999999"), Registers, "4", 3, "34127856FF00"},
        {"half a value", Both, access(Pairs, 4, 1, "00000000"), Registers, "4", 2, "FF00FF00"},
        {"a value below 0", Both, access(Pairs, -1, 2, "11112222"), Registers, "0", 1, "FF00"},
        {"and the next one", Both, access(Pairs, -2, 4, "1111222233334444"), Registers, "0", 3, "44443333FF00"},
        {"more 32-bit values than asked", Both, access(Pairs, 4, 2, "7856341299999999"), Registers, "4", 3, "34127856FF00"},
        {"a read-only table", Both, access(InputRegisters, 4, 1, "1111"), InputRegisters, "4", 1, "0000"},
    };
    for (Mode mode : {Shared, PerStation}) {
        settings.multiStation = mode;
        for (const auto &row : rows) {
            if (row.mode != mode && row.mode != Both)
                continue;
            store(access(Coils, 0, 2), 2, "3C00");
            store(access(Registers, 0, 8), 16, "00FF 00FF 00FF 00FF 00FF 00FF 00FF 00FF");
            RW_VAR var = row.write;
            WriteDataToLocal(&var);
            EXPECT_EQ(value(row.area, row.address, row.count), row.value) << row.what << ", mode " << mode;
        }
    }
    EXPECT_EQ(PLC_driver.extendList.size(), 11) << "nothing that lies below 0 has a record";
}

TEST_F(Image, WritesKeepOnlyTheValueOfARecord)
{
    settings.multiStation = 1;
    store(access(Registers, 0, 2), 4, "00FF 00FF");
    store(access(Coils, 0, 2), 2, "3C3C");
    EXPECT_EQ(record(1) + " " + record(3), "FF000000 3C00") << "the last of each reply was stretched";
    RW_VAR last = access(Registers, 1, 1, "3412"), coil = access(Coils, 9, 1, "01"), bit = access(RegisterBit, 0, 1, "01");
    WriteDataToLocal(&last);
    WriteDataToLocal(&coil);
    EXPECT_EQ(record(1) + " " + record(3), "3412 3E");
    PLC_driver.extendList[0].value.clear();
    PLC_driver.extendList[2].value.clear();
    coil.startAddress = 0;
    WriteDataToLocal(&bit);
    WriteDataToLocal(&coil);
    EXPECT_EQ(value(Registers, "0", 1) + value(Coils, "0", 1), "000000") << "bits of values that are not known stay so";
}

// Read and write at and beyond the end; canaries are the neighbours of the arrays in the driver object.
TEST_F(Image, AccessesAreClippedAtTheEnds)
{
    const struct
    {
        int area;
        const char *address;
        int count;
        const char *read;
    } rows[] = {
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
    for (const auto &row : rows) {
        QByteArray data(64, '\x01');
        SetRegisterData(QString(), row.area, QString::fromLatin1(row.address), 1, data, row.count, 0, 0);
        EXPECT_EQ(value(row.area, row.address, row.count), row.read) << row.address;
    }
    EXPECT_EQ(PLC_driver.inputBits[0], 0) << "behind the coils";
    PLC_driver.holdingRegisters[0] = 0x2222;
    PLC_driver.coilBits[0] = 1;
    const struct
    {
        void (*bits)(QByteArray &, unsigned char *, int, int);
        void (*registers)(QByteArray &, unsigned short *, int, int);
        int start, count;
        const char *out;
    } below[] = {
        {GetBitFromUC, nullptr, -1, 2, "000155555555555555"},  {GetBitFromUC, nullptr, -3, 4, "000000015555555555"},
        {nullptr, GetWordFromUS, -1, 1, "000055555555555555"}, {nullptr, GetWordFromUS, -3, 2, "000000005555555555"},
        {nullptr, GetWordFromUS, -3, 4, "000000000000222255"}, {nullptr, GetWordFromUI, -2, 4, "000000000000222255"},
        {nullptr, GetWordFromUI, -1, 1, "000055555555555555"},
    };
    for (const auto &row : below) {
        QByteArray out(9, '\x55');
        if (row.bits)
            row.bits(out, PLC_driver.coilBits, row.start, row.count);
        else
            row.registers(out, PLC_driver.holdingRegisters, row.start, row.count);
        EXPECT_EQ(hex(out), row.out) << "from " << row.start << ", " << row.count;
    }
    EXPECT_EQ(PLC_driver.inputRegisters[65535], 0) << "ahead of the holding registers";
}

TEST_F(Image, HostArrayKeepsWhatIsNotRead)
{
    for (int perStation : {0, 1}) {
        settings.multiStation = perStation;
        for (int area = Coils; area <= Pairs; ++area) {
            QByteArray out(6, '\x55');
            EXPECT_EQ(GetRegisterData(0, area, QString::fromLatin1("0.0").left(area == InputBit || area == RegisterBit ? 3 : 1),
                                      1, out, 2),
                      1);
            EXPECT_EQ(hex(out), area < InputRegisters ? "000055555555" : "000000005555") << "area " << area;
        }
    }
    QByteArray out;
    EXPECT_EQ(GetRegisterData(0, InputBit, QString::fromLatin1("7"), 1, out, 5), 0) << "no such address";
}

TEST_F(Image, RepliesReachTheTableTheyWereReadFrom)
{
    const struct
    {
        const char *what;
        RW_VAR request;
        int dataBytes;
        const char *data;
        int area;
        const char *address;
        int count;
        const char *value;
    } rows[] = {
        {"coils", access(Coils, 16, 2), 2, "AA55", Coils, "16", 16, "00010001000100010100010001000100"},
        {"six registers", access(Registers, 100, 6), 12, "0102030405060708090A0B0C", Registers, "100", 6,
         "02010403060508070A090C0B"},
        {"last register missing", access(Registers, 200, 3), 6, "0A0B0C0D0E", Registers, "200", 3, "0B0A0D0C0000"},
        {"no table", access(InputPairs, 100, 1), 2, "FFFF", InputRegisters, "100", 1, "0000"},
        {"past the end", access(Registers, 65535, 2), 4, "01020304", Registers, "65535", 1, "0201"},
        {"below the start", access(Registers, -1, 2), 4, "0102030405060708", Registers, "0", 3, "040300000000"},
        {"bits below the start", access(Coils, -8, 2), 2, "FFFFFFFF", Coils, "0", 9, "010101010101010100"},
        {"bits below the start, between bytes", access(Coils, -12, 2), 2, "0000", Coils, "0", 1, "01"},
        {"bits past the end", access(Coils, 65536, 9), 9, "01FF", Coils, "65536", 1, "01"},
        {"fewer bytes than announced", access(Coils, 40, 2), 2, "FF", Coils, "40", 9, "010101010101010100"},
        {"more bytes than announced", access(Registers, 300, 1), 2, "01020304", Registers, "300", 2, "02010000"},
    };
    for (const auto &row : rows) {
        store(row.request, row.dataBytes, row.data);
        EXPECT_EQ(value(row.area, row.address, row.count), row.value) << row.what;
    }
    EXPECT_EQ(PLC_driver.inputBits[0], 0) << "behind the coils";
    store(access(Registers, 10, 40000), 80000, QByteArray(160000, '7').constData());
    EXPECT_EQ(value(Registers, "40009", 2), "77770000") << "longer than any frame, for the announced length decides";
    store(access(Registers, 60000, 1), 2, "FFFF", QByteArray(), -1);
    EXPECT_EQ(value(Registers, "60000", 1), "0000") << "a header of less than nothing";
}

TEST_F(Image, WriteHalfTakesTheRegisterWithTheBitChanged)
{
    const struct
    {
        const char *what;
        RW_VAR queued;
        int subIndex;
        const char *read, *sent;
    } rows[] = {
        {"set", access(RegisterBit, 35, 1, "01"), -1, "0000", "0008"},
        {"clear", access(RegisterBit, 35, 1, "00"), -1, "00FF", "00F7"},
        {"a bit of the high byte", access(RegisterBit, 47, 1, "01"), -1, "1234", "9234"},
        {"any other value leaves it", access(RegisterBit, 35, 1, "02"), -1, "00F7", "00F7"},
        {"no bit leaves it", access(RegisterBit, 35, 1), -1, "1234", "1234"},
        {"below address 0 leaves it", access(RegisterBit, -3, 1, "01"), -1, "1230", "1230"},
        {"the very first bit", access(RegisterBit, 0, 1, "01"), -1, "0000", "0001"},
        {"the last of several registers", access(RegisterBit, 35, 1, "00"), -1, "1234567834FF", "34F7"},
        {"without a register 0 is taken", access(RegisterBit, 35, 1, "01"), -1, "80", "0008"},
        {"not the read half", access(RegisterBit, 35, 1, "01"), 0, "0102", "3030"},
    };
    for (int perStation : {0, 1}) {
        settings.multiStation = perStation;
        RW_VAR read = access(RegisterBit, 2, 1);
        for (const auto &row : rows) {
            PLC_driver.writeList = QList<RW_VAR>() << row.queued;
            read.subIndex = row.subIndex;
            store(read, bytes(row.read).size(), row.read, bytes("000000000006010600023030"));
            EXPECT_EQ(hex(PLC_driver.pendingList.at(1).frame), hex("0000 0000 0006 01 06 0002") + row.sent) << row.what;
        }
        EXPECT_EQ(value(Registers, "2", 1), "0201") << "the last one read";
        read.subIndex = -1;
        store(read, 2, "1234");
        EXPECT_EQ(PLC_driver.pendingList.size(), 1) << "no write waits behind";
        EXPECT_EQ(value(Registers, "2", 1), "3412");
    }
}

TEST_F(Image, LastRecordOfAStoreIsStretchedToTheWholeData)
{
    settings.multiStation = 1;
    store(access(Registers, 10, 3), 6, "010203");
    EXPECT_EQ(record(0) + "," + record(1) + "," + record(2), "0201,,000000000000") << "a byte of the second was missing";
    store(access(Coils, 8, 3), 3, "AABBCC");
    EXPECT_EQ(record(3) + "," + record(5), "AA,CC0000");
    store(access(Inputs, 8, 3), 3, "AA");
    EXPECT_EQ(record(7) + "," + record(8), ",000000") << "their bytes were missing";
    PLC_driver.extendList[1].value = bytes("FFFFFFFF");
    store(access(Registers, 10, 2), 4, "01020304");
    EXPECT_EQ(record(1), "04030000");
    store(access(Registers, 10, 0), 0, "");
    EXPECT_EQ(record(0), "") << "a store that touches no record does it to the first";
    EXPECT_EQ(value(Registers, "10", 1) + value(InputBit, "10.0", 1), "000000");
    PLC_driver.extendList.clear();
    store(access(Registers, 10, 0), 0, "");
    EXPECT_TRUE(PLC_driver.extendList.isEmpty());
}

TEST_F(Image, RecordsAreFoundWhoeverMadeThem)
{
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(ExtendFindSameVar(1, Registers, i), i);
    for (int address : {1000, 7, 999, 1000})
        addRecord(address);
    EXPECT_EQ(ExtendFindSameVar(1, Registers, 999), 302) << "appended directly";
    EXPECT_EQ(ExtendFindSameVar(1, Registers, 1000), 300) << "the first one, also where a later one lies behind its neighbour";
    EXPECT_EQ(ExtendFindSameVar(1, Registers, 7), 7);
    EXPECT_EQ(ExtendFindSameVar(2, Registers, 7), 304) << "another station's";
    EXPECT_EQ(ExtendFindSameVar(1, InputRegisters, 7), 305) << "another area's";
    PLC_driver.extendList.removeLast();
    EXPECT_EQ(ExtendFindSameVar(1, InputRegisters, 7), 305) << "made again after it was taken out";
    PLC_driver.extendList.clear();
    EXPECT_EQ(ExtendFindSameVar(1, Registers, 9), 0) << "cleared directly";
    for (int i = 0; i < 500; ++i)
        ExtendFindSameVar(1, Registers, i);
    PLC_driver.extendList.clear();
    for (int i = 0; i < 500; ++i)
        addRecord(5000 - i);
    EXPECT_EQ(ExtendFindSameVar(1, Registers, 4990), 10) << "cleared and filled again to the same size";
    PLC_driver.extendList[10].address = 1;
    EXPECT_EQ(ExtendFindSameVar(1, Registers, 4990), 500) << "changed in place";
    PLC_driver.extendList.last().address = 77;
    EXPECT_EQ(ExtendFindSameVar(1, Registers, 77), 500);
    qSwap(PLC_driver.extendList[20], PLC_driver.extendList[30]);
    EXPECT_EQ(ExtendFindSameVar(1, Registers, 4980), 30) << "two that changed places";
}

TEST_F(Image, HostWritesAreQueuedInBlocks)
{
    const struct
    {
        const char *what;
        int block, area;
        const char *address;
        int count;
        const char *value;
        int result;
        const char *blocks;
    } rows[] = {
        {"rest in the last block", 4, Registers, "20", 10, "", 3, "5:20*4 5:24*4 5:28*2"},
        {"a full last block", 4, Pairs, "20", 8, "", 2, "7:20*4 7:24*4"},
        {"no limit", 0, Registers, "20", 10, "", 1, "5:20*10"},
        {"each bit by itself", 4, Coils, "7", 3, "010001", 3, "0:7*1 0:8*1 0:9*1"},
        {"bits of a register", 4, RegisterBit, "1.15", 2, "0101", 2, "3:31*1 3:32*1"},
        {"nothing to write", 4, Registers, "0", 0, "", 0, ""},
        {"no bits to write", 4, Coils, "0", -1, "", 0, ""},
        {"read-only registers", 4, InputRegisters, "0", 1, "0000", 0, ""},
        {"read-only bits", 4, Inputs, "0", 1, "01", 0, ""},
        {"no address", 4, RegisterBit, "0", 1, "01", 0, ""},
        {"an address past 32 bits", 1, Registers, "2147483647", 2, "", 2, "5:2147483647*1 5:-2147483648*1"},
        {"a count past the table", 0, Registers, "0", INT_MAX, "", 1, "5:0*65536"},
        {"a full queue", 0, RegisterBit, "0.0", INT_MAX, "", 1024, nullptr},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        PLC_driver.writeList.clear();
        settings.writeBlockSize = row.block;
        EXPECT_EQ(write(row.area, row.address, row.count, row.value), row.result);
        EXPECT_TRUE(!row.blocks || listed(PLC_driver.writeList) == row.blocks) << listed(PLC_driver.writeList);
        for (const RW_VAR &block : PLC_driver.writeList)
            EXPECT_EQ(block.data.size(), row.area < InputRegisters ? block.dataLength : 2 * block.dataLength);
    }
}

TEST_F(Image, QueuedWriteCarriesItsOriginAndZeroesForWhatIsMissing)
{
    settings.remoteMode = 3;
    QByteArray three = bytes("010203");
    SetRegisterData(QString::fromLatin1("tag"), Registers, QString::fromLatin1("8"), 6, three, 2, 7, 8);
    const RW_VAR &var = PLC_driver.writeList.at(0);
    EXPECT_EQ(hex(var.data), "01020300");
    EXPECT_EQ(listed(PLC_driver.writeList), "5:8*2") << "the default station, while all share one image";
    EXPECT_EQ(origin(var), "7 8 1 3 2 0 0 tag 8");
    EXPECT_EQ(value(Registers, "8", 1), "0000") << "the image waits for the request";
    char entered[] = "\x34\x12";
    QByteArray borrowed = QByteArray::fromRawData(entered, 2);
    settings.multiStation = 1;
    SetRegisterData(QString(), Registers, QString::fromLatin1("8"), 6, borrowed, 1, 0, 0);
    entered[0] = 0;
    EXPECT_EQ(hex(PLC_driver.writeList.at(1).data), "3412") << "the host's memory may be gone by now";
    EXPECT_EQ(PLC_driver.writeList.at(1).station, 6);
}

TEST_F(Image, WritesShowAtOnceWhileTheStationFailsOrIsNotAsked)
{
    PLC_driver.lastFailed = true;
    write(Registers, "8", 2, "34127856");
    write(Coils, "8", 1, "01");
    EXPECT_EQ(listed(PLC_driver.writeList), "5:8*2 0:8*1");
    EXPECT_EQ(value(Registers, "8", 2) + value(Coils, "8", 1), "3412785601");
    settings.writeMode = 1;
    EXPECT_EQ(write(Registers, "9", 1, "BC9A"), 1);
    EXPECT_EQ(write(InputRegisters, "8", 1, "3412"), 1) << "read-only, and still no error";
    EXPECT_EQ(value(Registers, "8", 2) + value(InputRegisters, "8", 1), "3412BC9A0000");
    EXPECT_EQ(PLC_driver.writeList.size(), 2);
}
