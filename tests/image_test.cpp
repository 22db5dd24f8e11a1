// SPDX-License-Identifier: MIT
// The register image: packing, storing replies, host reads and writes, in both image modes. sequences_test.cpp asks what
// usual values come to; here are the edges and the odd cases.
#include "driver_fixture.h"

#include <climits>
#include <functional>

typedef DriverFixture Image;

namespace {

enum Mode { Shared = 0, PerStation = 1, Both = 2 };
enum Change { unchanged, written, replied };

/// Writes var's data to the image, or puts a read in flight, ahead of `behind`, and stores its data as the reply.
void make(Change change, RW_VAR var, const QList<Protocol> &behind = QList<Protocol>())
{
    if (change == written)
        WriteDataToLocal(&var);
    if (change != replied)
        return;
    Protocol request;
    request.replyHeaderLength = 9;
    request.replyDataLength = var.area == Coils || var.area == Inputs ? var.dataLength : 2 * var.dataLength;
    request.var = var;
    PLC_driver.pendingList = QList<Protocol>() << request << behind;
    QByteArray reply = QByteArray(9, '\xEE') + var.data;
    SaveToLocalDataErea(&reply);
}

std::string records()
{
    std::string values;
    for (const EXTENDVAR &record : PLC_driver.extendList)
        values += hex(record.value) + ',';
    return values;
}

} // namespace

TEST_F(Image, WhatThePanelShowsAfterwards)
{
    const Rows<Text, Mode, Change, RW_VAR, int, Text, int, Text> rows = {
        {"one coil", Both, unchanged, {}, Coils, "2", 1, "01"},
        {"an odd register is left out", Both, unchanged, {}, Pairs, "1", 3, "05000380"},
        {"one register is the low word", Shared, unchanged, {}, Pairs, "0", 1, "0380"},
        {"one register is nothing", PerStation, unchanged, {}, Pairs, "0", 1, ""},

        {"coils below 0", Both, written, access(Coils, -2, 3, "000001"), Coils, "0", 3, "010001"},
        {"any byte but 1 clears", Both, written, access(Coils, 2, 4, "0200FF01"), Coils, "1", 6, "000000000100"},
        {"coils stop with the data", Both, written, access(Coils, 1, 8, "01"), Coils, "0", 5, "0001010101"},
        {"more coils than asked", Both, written, access(Coils, 2, 1, "0000"), Coils, "2", 2, "0001"},
        {"the last coil", Shared, written, access(Coils, 65543, 3, "010101"), Coils, "65543", 3, "01"},
        {"far behind it", Shared, written, access(Coils, INT_MAX, INT_MAX, "01"), Coils, "2147483647", INT_MAX, ""},
        {"bits below 0", Both, written, access(RegisterBit, -2, 2, "0101"), Registers, "0", 1, "01C0"},
        {"bits across registers", Shared, written, access(RegisterBit, 79, 2, "0101"), Registers, "4", 2, "FF80FF00"},
        {"one bit of two registers", PerStation, written, access(RegisterBit, 79, 2, "0101"), Registers, "4", 2, "FF80FF80"},
        {"bits are no register", Both, written, access(RegisterBit, 6, 2, "0101"), Registers, "6", 2, "FF00FF00"},
        {"a byte of 2 clears", Shared, written, access(RegisterBit, 64, 1, "02"), Registers, "4", 1, "FE00"},
        {"a byte of 2 changes nothing", PerStation, written, access(RegisterBit, 64, 1, "02"), Registers, "4", 1, "FF00"},
        {"registers stop with the bits", PerStation, written, access(RegisterBit, 71, 10, "000000000000000000"), Registers, "4",
         2, "7F00FF00"},
        {"more bits than asked", Both, written, access(RegisterBit, 72, 1, "0001"), Registers, "4", 1, "FF00"},
        {"the last bit", Shared, written, access(RegisterBit, 1048575, 3, "010101"), RegisterBit, "65535.15", 3, "01"},
        {"registers below 0", Both, written, access(Registers, -1, 3, "111122223333"), Registers, "0", 3, "222233330500"},
        {"a register without both bytes", Both, written, access(Registers, 4, 2, "AABBCC"), Registers, "4", 2, "AABBFF00"},
        {"more registers than asked", Both, written, access(Registers, 4, 1, "34127856"), Registers, "4", 2, "3412FF00"},
        {"the last register", Shared, written, access(Registers, 65535, 2, "34127856"), Registers, "65535", 2, "3412"},
        {"32-bit values below 0", Both, written, access(Pairs, -2, 4, "0102030405060708"), Registers, "0", 2, "07080506"},
        {"half below 0", Both, written, access(Pairs, -1, 2, "01020304"), Registers, "0", 1, "01C0"},
        {"an odd register", Both, written, access(Pairs, 4, 3, "785634129999"), Registers, "4", 3, "34127856FF00"},
        {"without all bytes", Both, written, access(Pairs, 4, 4, "78563412999999"), Registers, "4", 3, "34127856FF00"},
        {"half a value", Both, written, access(Pairs, 4, 1, "00000000"), Registers, "4", 2, "FF00FF00"},
        {"more values than asked", Both, written, access(Pairs, 4, 2, "7856341299999999"), Registers, "4", 3, "34127856FF00"},
        {"the last value", Shared, written, access(Pairs, 65534, 4, "0102030405060708"), Pairs, "65534", 4, "01020304"},
        {"half of a last value", Shared, written, access(Pairs, 65535, 2, "01020304"), Pairs, "65535", 2, ""},
        {"the low word of half a value", Shared, unchanged, {}, Pairs, "65535", 1, ""},

        {"a reply for no table", Shared, replied, access(InputPairs, 0, 1, "FFFF"), InputRegisters, "0", 1, "0204"},
        {"a reply below 0", Shared, replied, access(Registers, -1, 3, "010203040506"), Registers, "0", 3, "040306050500"},
        {"a reply past the end", Shared, replied, access(Registers, 65535, 2, "01020304"), Registers, "65535", 1, "0201"},
        {"longer than any frame", Shared, replied, access(Registers, 10, 40000, QByteArray(160000, '7').constData()), Registers,
         "40009", 2, "77770000"},
        {"bits from inside a byte on", Shared, replied, access(Coils, 12, 1, "FF"), Coils, "7", 3, "000101"},
        {"bits below 0", Shared, replied, access(Coils, -8, 2, "0081"), Coils, "0", 11, "0100000000000001000001"},
        {"bits from inside a byte below 0 on", Shared, replied, access(Coils, -3, 2, "FFFF"), Coils, "0", 3, "000001"},
        {"bits past the end", Shared, replied, access(Coils, 65536, 9, "01FF"), Coils, "65536", 1, "01"},
        {"more bytes than announced", Shared, replied, access(Registers, 4, 1, "01020304"), Registers, "4", 2, "0201FF00"},
    };
    for (Mode mode : {Shared, PerStation}) {
        for (const auto &[what, modes, change, var, area, address, count, wanted] : rows) {
            if (modes != mode && modes != Both)
                continue;
            SCOPED_TRACE(testing::Message() << what << ", mode " << mode);
            restart(mode);
            make(replied, access(Coils, 0, 2, "3C84"));
            make(replied, access(InputRegisters, 0, 1, "0402"));
            make(replied, access(Registers, 0, 8, "C001 8003 0005 E007 00FF 00FF 00FF 00FF"));
            make(change, var);
            QByteArray out(32, '\x55'); // keeps what is not read
            EXPECT_EQ(GetRegisterData(0, area, QString::fromLatin1(address), 1, out, count), 1);
            const std::string rest(64 - std::string(wanted).size(), '5');
            EXPECT_EQ(hex(out), wanted + rest);
            EXPECT_EQ(PLC_driver.extendList.size(), mode == Shared ? 0 : 11) << "values that are known";
            EXPECT_EQ(PLC_driver.inputBits[0], 0) << "behind the coils";
            EXPECT_EQ(PLC_driver.inputRegisters[65535], 0) << "ahead of the holding registers";
        }
    }
    EXPECT_EQ(value(InputRegisters, "7", 1, 4) + value(Registers, "0", 1, 2), "00000000") << "another station's are not known";
    EXPECT_EQ(PLC_driver.extendList.size(), 13);
}

TEST_F(Image, ReadersGiveZeroesBelowAddress0)
{
    const Rows<Text, void (*)(QByteArray &, quint16 *, int, int), int, int, Text> rows = {
        {"bits of registers", &GetBitFromUS, -1, 3, "000101"},
        {"registers", &GetWordFromUS, -3, 4, "000000000000FFFF"},
        {"registers that are all below", &GetWordFromUS, -3, 2, "00000000"},
        {"32-bit values", &GetWordFromUI, -2, 4, "00000000FFFFFFFF"},
        {"half below 0", &GetWordFromUI, -1, 4, "00000000FFFFFFFF"},
        {"the low word of that", &GetWordFromUI, -1, 1, "0000"},
    };
    quint16 *const registers = PLC_driver.holdingRegisters;
    std::fill_n(registers, 9, 0xFFFF);
    for (const auto &[what, read, start, count, wanted] : rows) {
        QByteArray out(9, '\x55');
        read(out, registers, start, count);
        EXPECT_EQ(hex(out), wanted + hex("555555555555555555").substr(std::string(wanted).size())) << what;
    }
}

TEST_F(Image, WriteHalfTakesTheRegisterWithTheBitChanged)
{
    const char *const whole = "0000 0000 0006 01 06 0002 3030", *const cut = "0000 0000 0006 01 06 0002";
    const Rows<Text, int, Text, int, int, Text, Text, Text> rows = {
        {"any other value leaves it", 35, "02", -1, 1, "00F7", whole, "00F7"},
        {"no bit leaves it", 35, "", -1, 1, "1234", whole, "1234"},
        {"a bit below 0 leaves it", -16, "01", -1, 1, "1234", whole, "1234"},
        {"the last of several registers", 35, "00", -1, 3, "1234567834FF", whole, "34F7"},
        {"a frame without a value gets one", 35, "01", -1, 1, "0000", cut, "0008"},
        {"without a register 0 is taken", 35, "01", -1, 1, "80", whole, "0008"},
        {"not the read half", 35, "01", 0, 1, "0102", whole, "3030"},
    };
    for (const auto &[what, bit, data, subIndex, registers, received, frame, sent] : rows) {
        PLC_driver.writeList = QList<RW_VAR>() << access(RegisterBit, bit, 1, data);
        RW_VAR read = access(RegisterBit, 2, registers, received);
        read.subIndex = subIndex;
        Protocol writeHalf;
        writeHalf.frame = bytes(frame);
        make(replied, read); // without a write half nothing is completed
        make(replied, read, QList<Protocol>() << writeHalf);
        EXPECT_EQ(hex(PLC_driver.pendingList.at(1).frame), hex(cut) + sent) << what;
    }
}

TEST_F(Image, RecordsHaveWhatTheLastStoreOrWriteLeaves)
{
    const Rows<Text, Text, Change, RW_VAR, Text> rows = {
        {"registers, the last one stretched", "FFFFFF", replied, access(Registers, 10, 3, "010203"), "0201,,000000000000,"},
        {"the last one had bytes behind", "FFFFFFFF", replied, access(Registers, 10, 2, "01020304"), "0201,04030000,"},
        {"bits", "FFFFFF", replied, access(Coils, 8, 3, "AABBCC"), "AA,BB,CC0000,"},
        {"bits of which two bytes are missing", "FFFFFF", replied, access(Inputs, 8, 3, "AA"), "AA,,000000,"},
        {"a written register", "FFFFFF", written, access(Registers, 11, 1, "3412"), "3412,"},
        {"a written coil", "FFFFFF", written, access(Coils, 25, 1, "00"), "FD,"},
        {"a bit of an unknown register", "FF", written, access(RegisterBit, 8, 1, "00"), "FF,"},
        {"an unknown coil", "", written, access(Coils, 8, 1, "01"), ","},
    };
    for (const auto &[what, before, change, var, wanted] : rows) {
        restart(PerStation);
        make(change, var);
        for (EXTENDVAR &record : PLC_driver.extendList)
            record.value = bytes(before);
        make(change, var);
        EXPECT_EQ(records(), wanted) << what;
    }
    PLC_driver.extendList.clear();
    EXPECT_EQ(value(RegisterBit, "10.7", 17), hex(QByteArray(17, '\0')));
    EXPECT_EQ(records(), "00000000,00000000,") << "what is asked for becomes known";
    PLC_driver.extendList.last().value = bytes("FF");
    make(replied, access(Registers, 10, 0));
    EXPECT_EQ(records(), ",FF,") << "a store that touches no record empties the first";
    EXPECT_EQ(value(RegisterBit, "11.7", 2), "0100") << "bytes that are not there are 0";
    make(replied, access(Registers, 0, 70000));
    EXPECT_EQ(PLC_driver.extendList.size(), 65536) << "no reply stores more than a whole table";
}

TEST_F(Image, RecordsAreFoundWhoeverMadeThem)
{
    QList<EXTENDVAR> &list = PLC_driver.extendList;
    const auto addRecord = [&](int address) { list.append({1, Registers, address, {}}); };
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
        {"no limit", 0, Registers, "20", 10, 1, "5:20*10"},
        {"nothing to write", 4, Registers, "0", 0, 0, ""},
        {"nothing to write, no limit", 0, Registers, "0", 0, 0, ""},
        {"no bits", 0, Coils, "0", 0, 0, ""},
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
    }
    settings.writeMode = 1;
    EXPECT_EQ(write(InputRegisters, "8", 1, "3412"), 1) << "read-only, and no error while stations are not asked";
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
    settings.multiStation = 1;
    write(Registers, "8", 2, "", 0, 0, 6);
    EXPECT_EQ(listed(PLC_driver.writeList), "5:8*10 5:18*2 6/5:8*2") << "the default station, while all share one image";
}
