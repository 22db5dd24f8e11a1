// SPDX-License-Identifier: MIT
// The register image: packing, storing replies, host reads and writes, in both image modes.
#include "driver_fixture.h"

#include <climits>

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
    var.area = 5;
    var.address = address;
    PLC_driver.extendList.append(var);
}

} // namespace

TEST_F(Driver, WhatThePanelReadsInBothImageModes)
{
    const struct
    {
        const char *what;
        int area;
        const char *address;
        int count;
        const char *shared, *perStation;
    } rows[] = {
        {"coils from inside a byte", 0, "3", 8, "0101010000000001", nullptr},
        {"inputs", 1, "14", 3, "000101", nullptr},
        {"the last coil", 0, "14", 2, "0001", nullptr},
        {"bits of an input register", 2, "0.7", 4, "00000001", nullptr},
        {"bits across holding registers", 3, "0.13", 5, "0001010101", nullptr},
        {"the first bit of a high byte", 3, "0.8", 1, "00", nullptr},
        {"input registers", 4, "0", 2, "02040608", nullptr},
        {"holding registers", 5, "0", 3, "01C003800500", nullptr},
        {"a 32-bit input", 6, "0", 2, "06080204", nullptr},
        {"32-bit values", 7, "0", 4, "038001C007E00500", nullptr},
        {"an odd register is left out", 7, "1", 3, "05000380", nullptr},
        {"one register is the low word, and nothing per station", 7, "0", 1, "0380", ""},
        {"nothing asked", 5, "0", 0, "", nullptr},
        {"less than nothing", 0, "0", -1, "", nullptr},
        {"no such area", 9, "0", 5, "", nullptr},
    };
    for (int multi = 0; multi <= 1; ++multi) {
        settings.multiStation = multi;
        store(access(0, 0, 2), 2, "3884");
        store(access(1, 8, 2), 2, "8001");
        store(access(4, 0, 2), 4, "04020806");
        store(access(5, 0, 4), 8, "C001 8003 0005 E007");
        for (const auto &row : rows) {
            SCOPED_TRACE(testing::Message() << row.what << multi);
            EXPECT_EQ(value(row.area, row.address, row.count), multi && row.perStation ? row.perStation : row.shared);
        }
    }
    EXPECT_EQ(PLC_driver.extendList.size(), 10) << "reading known values adds no record";
    EXPECT_EQ(value(4, "7", 1, 4), "0000");
    EXPECT_EQ(PLC_driver.extendList.size(), 11) << "reading an unknown one does";
    EXPECT_EQ(record(10), "00000000");
    store(access(5, 0, 1, "", 2), 2, "0A0B");
    EXPECT_EQ(value(5, "0", 1, 2) + value(5, "0", 1, 1), "0B0A01C0") << "stations keep their own values";
}

TEST_F(Driver, WhatThePanelWritesInBothImageModes)
{
    const struct
    {
        const char *what;
        RW_VAR write;
        int area;
        const char *address;
        int count;
        const char *shared, *perStation;
    } rows[] = {
        {"coils across bytes", access(0, 6, 3, "010101"), 0, "6", 4, "01010100", nullptr},
        {"any byte but 1 clears", access(0, 2, 4, "0200FF01"), 0, "1", 6, "000000000100", nullptr},
        {"coils stop with the data", access(0, 1, 8, "01"), 0, "0", 5, "0001010101", nullptr},
        {"coils below 0", access(0, -2, 3, "000001"), 0, "0", 3, "010001", nullptr},
        {"bits: per station the start picks the bit", access(3, 25, 2, "0101"), 5, "1", 1, "FF06", "FF02"},
        {"bits across registers", access(3, 31, 2, "0101"), 5, "1", 2, "FF80FF00", "FF80FF80"},
        {"a bit cleared", access(3, 19, 1, "00"), 5, "1", 1, "F700", nullptr},
        {"the very first bit", access(3, 0, 1, "00"), 5, "0", 1, "FE00", nullptr},
        {"the first bit of a high byte", access(3, 24, 1, "01"), 5, "1", 1, "FF01", nullptr},
        {"a byte of 2", access(3, 16, 1, "02"), 5, "1", 1, "FE00", "FF00"},
        {"bits stop with the data", access(3, 32, 20, "00"), 5, "2", 2, "FE00FF00", nullptr},
        {"bits stop with the data, ahead of a register", access(3, 23, 10, "010101010101010101"), 5, "1", 2, "FFFFFF00",
         "FF00FF00"},
        {"a bit below 0", access(3, -1, 1, "01"), 5, "0", 1, "FF00", nullptr},
        {"registers", access(5, 4, 2, "34127856"), 5, "4", 3, "34127856FF00", nullptr},
        {"a register without both bytes", access(5, 4, 2, "AABBCC"), 5, "4", 2, "AABBFF00", nullptr},
        {"registers below 0", access(5, -1, 2, "11112222"), 5, "0", 2, "2222FF00", nullptr},
        {"a 32-bit value", access(7, 4, 2, "78563412"), 5, "4", 4, "34127856FF00FF00", nullptr},
        {"two of them", access(7, 4, 4, "0102030405060708"), 5, "4", 4, "0304010207080506", nullptr},
        {"an odd register", access(7, 4, 3, "785634129999"), 5, "4", 3, "34127856FF00", nullptr},
        {"a second value without all bytes", access(7, 4, 4, "78563412999999"), 5, "4", 3, "34127856FF00", nullptr},
        {"half a value", access(7, 4, 1, "00000000"), 5, "4", 2, "FF00FF00", nullptr},
        {"a value below 0", access(7, -1, 2, "11112222"), 5, "0", 1, "FF00", nullptr},
        {"and the next one", access(7, -2, 4, "1111222233334444"), 5, "0", 3, "44443333FF00", nullptr},
        {"the last coils of a byte", access(0, 14, 2, "0101"), 0, "13", 3, "000101", nullptr},
        {"the last bits of a register", access(3, 126, 2, "0101"), 5, "7", 1, "FFC0", "FF40"},
        {"more coils than asked", access(0, 2, 1, "0000"), 0, "2", 2, "0001", nullptr},
        {"more bits than asked", access(3, 16, 1, "0000"), 5, "1", 1, "FE00", nullptr},
        {"more registers than asked", access(5, 4, 1, "34127856"), 5, "4", 2, "3412FF00", nullptr},
        {"more 32-bit values than asked", access(7, 4, 2, "7856341299999999"), 5, "4", 3, "34127856FF00", nullptr},
        {"a read-only table", access(4, 4, 1, "1111"), 4, "4", 1, "0000", nullptr},
    };
    for (int multi = 0; multi <= 1; ++multi) {
        settings.multiStation = multi;
        for (const auto &row : rows) {
            SCOPED_TRACE(testing::Message() << row.what << multi);
            store(access(0, 0, 2), 2, "3C00");
            store(access(5, 0, 8), 16, "00FF 00FF 00FF 00FF 00FF 00FF 00FF 00FF");
            RW_VAR var = row.write;
            WriteDataToLocal(&var);
            EXPECT_EQ(value(row.area, row.address, row.count), multi && row.perStation ? row.perStation : row.shared);
        }
    }
    EXPECT_EQ(PLC_driver.extendList.size(), 11) << "nothing that lies below 0 has a record";
    RW_VAR last = access(5, 7, 1, "3412");
    WriteDataToLocal(&last);
    EXPECT_EQ(record(9), "3412") << "which was stretched to all sixteen bytes of its reply";
    store(access(0, 0, 2), 2, "3C3C");
    RW_VAR coil = access(0, 9, 1, "01");
    WriteDataToLocal(&coil);
    EXPECT_EQ(record(1), "3E") << "a coil write leaves one byte";
    PLC_driver.extendList[0].value.clear();
    PLC_driver.extendList[2].value.clear();
    RW_VAR bit = access(3, 0, 1, "01");
    coil.startAddress = 0;
    WriteDataToLocal(&bit);
    WriteDataToLocal(&coil);
    EXPECT_EQ(value(5, "0", 1) + value(0, "0", 1), "000000") << "bits of values that are not known stay so";
}

// Read and write at and beyond the end; canaries are the neighbours of the arrays in the driver object.
TEST_F(Driver, AccessesAreCutOffAtTheEndsOfTheImage)
{
    const struct
    {
        int area;
        const char *address;
        int count;
        const char *read;
    } rows[] = {
        {0, "65543", 3, "01"},    {0, "65544", 1, ""},
        {3, "65535.15", 3, "01"}, {5, "65535", 2, "0101"},
        {5, "65536", 1, ""},      {7, "65534", 4, "01010101"},
        {7, "65535", 2, ""},      {7, "65535", 1, ""},
        {5, "2147483647", 9, ""}, {0, "2147483647", INT_MAX, ""},
    };
    settings.writeMode = 0;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.address);
        QByteArray data(64, '\x01');
        SetRegisterData(QString(), row.area, QString::fromLatin1(row.address), 1, data, row.count, 0, 0);
        EXPECT_EQ(value(row.area, row.address, row.count), row.read);
    }
    QByteArray out(12, '\x55');
    PLC_driver.holdingRegisters[0] = 0x2222;
    PLC_driver.coilBits[0] = 1;
    GetBitFromUC(out, PLC_driver.coilBits, -1, 2);
    EXPECT_EQ(hex(out.left(4)), "00015555");
    GetWordFromUS(out, PLC_driver.holdingRegisters, -1, 1);
    EXPECT_EQ(hex(out.left(4)), "00005555");
    GetWordFromUS(out, PLC_driver.holdingRegisters, -3, 2);
    GetWordFromUS(out, PLC_driver.holdingRegisters, -4, 5);
    EXPECT_EQ(hex(out), "000000000000000022225555");
    out.fill('\x55', 9);
    GetWordFromUI(out, PLC_driver.holdingRegisters, -2, 4);
    EXPECT_EQ(hex(out), "000000000000222255");
    out.fill('\x55');
    GetWordFromUI(out, PLC_driver.holdingRegisters, -1, 1);
    EXPECT_EQ(hex(out), "000055555555555555");
    GetBitFromUC(out, PLC_driver.coilBits, -3, 4);
    EXPECT_EQ(hex(out), "000000015555555555");
    EXPECT_EQ(PLC_driver.inputBits[0], 0) << "behind the coils";
    EXPECT_EQ(PLC_driver.inputRegisters[65535], 0) << "ahead of the holding registers";
}

TEST_F(Driver, HostArrayKeepsWhatIsNotWritten)
{
    for (int multi = 0; multi <= 1; ++multi) {
        settings.multiStation = multi;
        for (int area = 0; area < 8; ++area) {
            const QString address = QString::fromLatin1(area == 2 || area == 3 ? "0.0" : "0");
            const int size = area < 4 ? 2 : 4;
            QByteArray out(12, '\x55');
            EXPECT_EQ(GetRegisterData(0, area, address, 1, out, 2), 1);
            EXPECT_EQ(hex(out), hex(QByteArray(size, '\0') + QByteArray(12 - size, '\x55'))) << area;
        }
    }
    QByteArray out;
    EXPECT_EQ(GetRegisterData(0, 2, QString::fromLatin1("7"), 1, out, 5), 0) << "no such address";
}

TEST_F(Driver, RepliesReachTheTableTheyWereReadFrom)
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
        {"coils", access(0, 16, 2), 2, "AA55", 0, "16", 16, "00010001000100010100010001000100"},
        {"inputs", access(1, 8, 1), 1, "80", 1, "15", 1, "01"},
        {"input registers", access(4, 100, 2), 4, "01020304", 4, "100", 2, "02010403"},
        {"six registers", access(5, 100, 6), 12, "0102030405060708090A0B0C", 5, "100", 6, "02010403060508070A090C0B"},
        {"last register missing", access(5, 200, 3), 6, "0A0B0C0D0E", 5, "200", 3, "0B0A0D0C0000"},
        {"no table", access(6, 100, 1), 2, "FFFF", 4, "100", 1, "0201"},
        {"past the end", access(5, 65535, 2), 4, "01020304", 5, "65535", 1, "0201"},
        {"below the start", access(5, -1, 2), 4, "0102030405060708", 5, "0", 3, "040300000000"},
        {"bits below the start", access(0, -8, 2), 2, "FFFFFFFF", 0, "0", 9, "010101010101010100"},
        {"bits below the start, between bytes", access(0, -12, 2), 2, "0000", 0, "0", 1, "01"},
        {"bits past the end", access(0, 65536, 9), 9, "01FF", 0, "65536", 1, "01"},
        {"fewer bytes than announced", access(0, 40, 2), 2, "FF", 0, "40", 9, "010101010101010100"},
        {"more bytes than announced", access(5, 300, 1), 2, "01020304", 5, "300", 2, "02010000"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        store(row.request, row.dataBytes, row.data);
        EXPECT_EQ(value(row.area, row.address, row.count), row.value);
    }
    EXPECT_EQ(PLC_driver.inputBits[0], 0) << "behind the coils";
    store(access(5, 10, 40000), 80000, QByteArray(160000, '7').constData());
    EXPECT_EQ(value(5, "40009", 2), "77770000") << "longer than any frame, for the announced length decides";
    store(access(5, 60000, 1), 2, "FFFF", QByteArray(), -1);
    EXPECT_EQ(value(5, "60000", 1), "0000") << "a header of less than nothing";
}

TEST_F(Driver, WriteBackTakesTheRegisterWithTheBitChanged)
{
    const struct
    {
        const char *what;
        RW_VAR queued;
        int subIndex;
        const char *read, *sent;
    } rows[] = {
        {"set", access(3, 35, 1, "01"), -1, "0000", "0008"},
        {"clear", access(3, 35, 1, "00"), -1, "00FF", "00F7"},
        {"a bit of the high byte", access(3, 47, 1, "01"), -1, "1234", "9234"},
        {"any other value leaves it", access(3, 35, 1, "02"), -1, "00FF", "00FF"},
        {"no bit leaves it", access(3, 35, 1), -1, "1234", "1234"},
        {"below address 0 leaves it", access(3, -3, 1, "01"), -1, "1230", "1230"},
        {"the very first bit", access(3, 0, 1, "01"), -1, "0000", "0001"},
        {"the last of several registers", access(3, 35, 1, "00"), -1, "1234567834FF", "34F7"},
        {"without a register 0 is taken", access(3, 35, 1, "01"), -1, "80", "0008"},
        {"not the read half", access(3, 35, 1, "01"), 0, "0102", "3030"},
    };
    for (int multi = 0; multi <= 1; ++multi) {
        settings.multiStation = multi;
        for (const auto &row : rows) {
            SCOPED_TRACE(row.what);
            PLC_driver.writeList = QList<RW_VAR>() << row.queued;
            RW_VAR read = access(3, 2, 1);
            read.subIndex = row.subIndex;
            store(read, bytes(row.read).size(), row.read, bytes("000000000006010600023030"));
            EXPECT_EQ(hex(PLC_driver.pendingList.at(1).frame), hex("0000 0000 0006 01 06 0002") + row.sent);
        }
        EXPECT_EQ(value(5, "2", 1), "0201") << "the last one read";
        RW_VAR read = access(3, 2, 1);
        read.subIndex = -1;
        store(read, 2, "1234");
        EXPECT_EQ(PLC_driver.pendingList.size(), 1) << "no write waits behind";
        EXPECT_EQ(value(5, "2", 1), "3412");
    }
}

TEST_F(Driver, LastRecordOfAStoreIsStretchedToTheWholeData)
{
    settings.multiStation = 1;
    store(access(5, 10, 3), 6, "010203");
    EXPECT_EQ(record(0), "0201");
    EXPECT_EQ(record(1), "") << "one of its bytes was missing";
    EXPECT_EQ(record(2), "000000000000");
    store(access(0, 8, 3), 3, "AABBCC");
    EXPECT_EQ(record(3) + "," + record(5), "AA,CC0000");
    store(access(1, 8, 3), 3, "AA");
    EXPECT_EQ(record(7) + "," + record(8), ",000000") << "their bytes were missing";
    PLC_driver.extendList[1].value = bytes("FFFFFFFF");
    store(access(5, 10, 2), 4, "01020304");
    EXPECT_EQ(record(1), "04030000");
    store(access(5, 10, 0), 0, "");
    EXPECT_EQ(record(0), "") << "a store that touches no record does it to the first";
    EXPECT_EQ(value(5, "10", 1) + value(2, "10.0", 1), "000000");
    PLC_driver.extendList.clear();
    store(access(5, 10, 0), 0, "");
    EXPECT_TRUE(PLC_driver.extendList.isEmpty());
}

TEST_F(Driver, RecordsAreFoundWhoeverMadeThem)
{
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(ExtendFindSameVar(1, 5, i), i);
    addRecord(1000);
    EXPECT_EQ(ExtendFindSameVar(1, 5, 1000), 300) << "appended directly";
    addRecord(7);
    EXPECT_EQ(ExtendFindSameVar(1, 5, 7), 7) << "the first one wins";
    addRecord(999);
    addRecord(1000);
    EXPECT_EQ(ExtendFindSameVar(1, 5, 999), 302);
    EXPECT_EQ(ExtendFindSameVar(1, 5, 1000), 300) << "also where a later one lies behind its neighbour";
    EXPECT_EQ(ExtendFindSameVar(2, 5, 7), 304);
    EXPECT_EQ(ExtendFindSameVar(1, 4, 7), 305);
    PLC_driver.extendList.removeLast();
    EXPECT_EQ(ExtendFindSameVar(1, 4, 7), 305) << "made again after it was taken out";
    PLC_driver.extendList.clear();
    EXPECT_EQ(ExtendFindSameVar(1, 5, 9), 0) << "cleared directly";
    for (int i = 0; i < 500; ++i)
        ExtendFindSameVar(1, 5, i);
    PLC_driver.extendList.clear();
    for (int i = 0; i < 500; ++i)
        addRecord(5000 - i);
    EXPECT_EQ(ExtendFindSameVar(1, 5, 4990), 10) << "cleared and filled again to the same size";
    PLC_driver.extendList[10].address = 1;
    EXPECT_EQ(ExtendFindSameVar(1, 5, 4990), 500) << "changed in place";
    PLC_driver.extendList.last().address = 77;
    EXPECT_EQ(ExtendFindSameVar(1, 5, 77), 500);
    qSwap(PLC_driver.extendList[20], PLC_driver.extendList[30]);
    EXPECT_EQ(ExtendFindSameVar(1, 5, 4980), 30) << "two that changed places";
    PLC_driver.extendList[250].address = 78;
    EXPECT_EQ(ExtendFindSameVar(1, 5, 78), 250) << "in the middle, where a new place is doubted";
}

TEST_F(Driver, HostWritesAreQueuedInPieces)
{
    const struct
    {
        const char *what;
        int block, area;
        const char *address;
        int count;
        const char *value;
        int result;
        const char *pieces;
    } rows[] = {
        {"rest in the last piece", 4, 5, "20", 10, "", 3, "5:20*4 5:24*4 5:28*2"},
        {"a full last piece", 4, 7, "20", 8, "", 2, "7:20*4 7:24*4"},
        {"no limit", 0, 5, "20", 10, "", 1, "5:20*10"},
        {"each bit by itself", 4, 0, "7", 3, "010001", 3, "0:7*1 0:8*1 0:9*1"},
        {"bits of a register", 4, 3, "1.15", 2, "0101", 2, "3:31*1 3:32*1"},
        {"nothing to write", 4, 5, "0", 0, "", 0, ""},
        {"no bits to write", 4, 0, "0", -1, "", 0, ""},
        {"read-only registers", 4, 4, "0", 1, "0000", 0, ""},
        {"read-only bits", 4, 1, "0", 1, "01", 0, ""},
        {"no address", 4, 3, "0", 1, "01", 0, ""},
        {"an address past 32 bits", 1, 5, "2147483647", 2, "", 2, "5:2147483647*1 5:-2147483648*1"},
        {"a count past the table", 0, 5, "0", INT_MAX, "", 1, "5:0*65536"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        PLC_driver.writeList.clear();
        settings.writeBlockSize = row.block;
        EXPECT_EQ(write(row.area, row.address, row.count, row.value), row.result);
        EXPECT_EQ(listed(PLC_driver.writeList), row.pieces);
        for (const RW_VAR &piece : PLC_driver.writeList)
            EXPECT_EQ(piece.data.size(), row.area < 4 ? piece.dataLength : 2 * piece.dataLength);
    }
}

TEST_F(Driver, QueuedWriteCarriesItsOriginAndZeroesForWhatIsMissing)
{
    settings.remoteMode = 3;
    QByteArray three = bytes("010203");
    SetRegisterData(QString::fromLatin1("tag"), 5, QString::fromLatin1("8"), 6, three, 2, 7, 8);
    const RW_VAR &var = PLC_driver.writeList.at(0);
    EXPECT_EQ(hex(var.data), "01020300");
    EXPECT_EQ(var.station, 1) << "the default station, while all share one image";
    EXPECT_EQ(origin(var), "7 8 1 3 2 0 0 tag 8");
    EXPECT_EQ(value(5, "8", 1), "0000") << "the image waits for the request";
    char entered[] = "\x34\x12";
    QByteArray borrowed = QByteArray::fromRawData(entered, 2);
    SetRegisterData(QString(), 5, QString::fromLatin1("8"), 1, borrowed, 1, 0, 0);
    entered[0] = 0;
    EXPECT_EQ(hex(PLC_driver.writeList.at(1).data), "3412") << "the host's memory may be gone by now";
    settings.multiStation = 1;
    write(5, "9", 1, "0100", 0, 0, 6);
    EXPECT_EQ(PLC_driver.writeList.at(2).station, 6);
}

TEST_F(Driver, WritesShowAtOnceWhileTheStationFailsOrIsNotAsked)
{
    PLC_driver.lastFailed = true;
    write(5, "8", 2, "34127856");
    write(0, "8", 1, "01");
    EXPECT_EQ(listed(PLC_driver.writeList), "5:8*2 0:8*1");
    EXPECT_EQ(value(5, "8", 2) + value(0, "8", 1), "3412785601");
    settings.writeMode = 1;
    EXPECT_EQ(write(5, "9", 1, "BC9A"), 1);
    EXPECT_EQ(write(4, "8", 1, "3412"), 1) << "read-only, and still no error";
    EXPECT_EQ(value(5, "8", 2) + value(4, "8", 1), "3412BC9A0000");
    EXPECT_EQ(PLC_driver.writeList.size(), 2);
}
