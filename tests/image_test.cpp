// SPDX-License-Identifier: MIT
// The register image: packing, storing replies, host reads and writes, in both image modes.
#include "driver_fixture.h"

#include <climits>

namespace {

/// Puts a read in flight whose reply is stored without being judged.
void store(const RW_VAR &var, int dataBytes, const char *data, int header = 9)
{
    Protocol request;
    request.replyHeaderLength = header;
    request.replyDataLength = dataBytes;
    request.var = var;
    PLC_driver.pendingList = QList<Protocol>() << request;
    QByteArray reply = QByteArray(header, '\xEE') + bytes(data);
    SaveToLocalDataErea(&reply);
}

std::string record(int index)
{
    return hex(PLC_driver.extendList.at(index).value);
}

} // namespace

TEST_F(Driver, BitAndWordOrder)
{
    QByteArray on = bytes("01"), pair = bytes("78563412"), word = bytes("3412");
    SetBitToUC(17, PLC_driver.coilBits, &on, 1);
    EXPECT_EQ(PLC_driver.coilBits[2], 2);
    SetBitToUS(17, PLC_driver.holdingRegisters, &on, 1);
    EXPECT_EQ(PLC_driver.holdingRegisters[1], 2);
    SetWordToUI(100, PLC_driver.holdingRegisters, &pair, 2);
    EXPECT_EQ(PLC_driver.holdingRegisters[100], 0x1234);
    EXPECT_EQ(PLC_driver.holdingRegisters[101], 0x5678);
    SetWordToUS(9, PLC_driver.holdingRegisters, &word, 1);
    EXPECT_EQ(value(0, "16", 3), "000100");
    EXPECT_EQ(value(3, "1.0", 3), "000100");
    EXPECT_EQ(value(7, "100", 2), "78563412");
    EXPECT_EQ(value(7, "100", 3), "78563412") << "an odd register is left out";
    EXPECT_EQ(value(7, "100", 1), "7856") << "one register is the low word";
    SetWordToUI(102, PLC_driver.holdingRegisters, &pair, 2);
    EXPECT_EQ(value(7, "100", 4), "7856341278563412") << "two values";
    EXPECT_EQ(value(5, "9", 1), "3412");
}

TEST_F(Driver, WritersStopWhereTheirInputStops)
{
    std::fill_n(PLC_driver.coilBits, 2, quint8(0xFF));
    std::fill_n(PLC_driver.holdingRegisters, 4, quint16(0xFFFF));
    QByteArray odd = bytes("0200FF"), five = bytes("0102030405");
    SetBitToUC(0, PLC_driver.coilBits, &odd, 8);
    EXPECT_EQ(PLC_driver.coilBits[0], 0xF8) << "2, 0 and 255 clear";
    SetWordToUS(0, PLC_driver.holdingRegisters, &odd, 2);
    EXPECT_EQ(value(5, "0", 2), "0200FFFF");
    SetWordToUI(0, PLC_driver.holdingRegisters, &five, 4);
    EXPECT_EQ(value(5, "0", 4), "03040102FFFFFFFF");
    SetWordToUI(2, PLC_driver.holdingRegisters, &five, 1);
    EXPECT_EQ(value(5, "2", 1), "FFFF");
    SetBitToUS(32, PLC_driver.holdingRegisters, &odd, 16);
    EXPECT_EQ(PLC_driver.holdingRegisters[2], 0xFFF8);
}

// Read and write at and beyond both ends; canaries are the neighbours of the arrays in the driver object.
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
    for (const auto &row : rows) {
        SCOPED_TRACE(row.address);
        QByteArray data(64, '\x01');
        settings.writeMode = 0;
        SetRegisterData(QString(), row.area, QString::fromLatin1(row.address), 1, data, row.count, 0, 0);
        EXPECT_EQ(value(row.area, row.address, row.count), row.read);
    }
    RW_VAR below = access(5, -1, 2, "11112222"), pair = access(7, -1, 2, "11112222"), bit = access(0, -2, 4, "01010101");
    for (RW_VAR *var : {&pair, &below, &bit})
        WriteDataToLocal(var);
    EXPECT_EQ(value(5, "0", 1), "2222");
    EXPECT_EQ(value(0, "0", 3), "010100");
    QByteArray out;
    GetWordFromUS(out, PLC_driver.holdingRegisters, -1, 2);
    EXPECT_EQ(hex(out), "00002222");
    EXPECT_EQ(PLC_driver.inputBits[0], 0) << "behind the coils";
    EXPECT_EQ(PLC_driver.inputRegisters[65535], 0) << "ahead of the holding registers";
}

TEST_F(Driver, HostArrayKeepsWhatIsNotWritten)
{
    QByteArray out(10, '\x55');
    EXPECT_EQ(GetRegisterData(0, 5, QString::fromLatin1("0"), 1, out, 2), 1);
    EXPECT_EQ(hex(out), "00000000555555555555");
    EXPECT_EQ(GetRegisterData(0, 9, QString::fromLatin1("0"), 1, out, 5), 1) << "no such area";
    EXPECT_EQ(GetRegisterData(0, 2, QString::fromLatin1("7"), 1, out, 5), 0) << "no such address";
    EXPECT_EQ(hex(out), "00000000555555555555");
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
        {"holding registers", access(5, 100, 2), 4, "01020304", 5, "100", 2, "02010403"},
        {"last register missing", access(5, 100, 3), 6, "0A0B0C0D0E", 5, "100", 3, "0B0A0D0C0000"},
        {"no table", access(6, 100, 1), 2, "FFFF", 4, "100", 1, "0201"},
        {"past the end", access(5, 65535, 2), 4, "01020304", 5, "65535", 1, "0201"},
        {"below the start", access(5, -1, 2), 4, "01020304", 5, "0", 1, "0403"},
        {"bits below the start", access(0, -8, 2), 2, "FFFF", 0, "0", 9, "010101010101010100"},
        {"bits past the end", access(0, 65536, 9), 9, "01FF", 0, "65536", 1, "01"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        store(row.request, row.dataBytes, row.data);
        EXPECT_EQ(value(row.area, row.address, row.count), row.value);
    }
}

TEST_F(Driver, WriteBackTakesTheRegisterWithTheBitChanged)
{
    const struct
    {
        const char *what, *bit, *read, *sent;
        int subIndex, multi;
    } rows[] = {
        {"set", "01", "0000", "0008", -1, 0},
        {"clear", "00", "00FF", "00F7", -1, 0},
        {"any other value leaves it", "02", "00FF", "00FF", -1, 0},
        {"no queued bit leaves it", "", "1234", "1234", -1, 0},
        {"not the read half", "01", "0000", "3030", 0, 0},
        {"per station", "01", "8000", "8008", -1, 1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        settings.multiStation = row.multi;
        PLC_driver.writeList = QList<RW_VAR>() << access(3, 35, 1, row.bit);
        PLC_driver.pendingList.clear();
        WriteBool_WordOfBit(&PLC_driver.writeList[0]);
        PLC_driver.pendingList[0].var.subIndex = row.subIndex;
        QByteArray reply = QByteArray(9, '\0') + bytes(row.read);
        SaveToLocalDataErea(&reply);
        EXPECT_EQ(hex(PLC_driver.pendingList.at(1).frame.mid(10)), row.sent);
    }
    EXPECT_EQ(value(5, "2", 1), "0080");
    settings.multiStation = 0;
    EXPECT_EQ(value(5, "2", 1), "0000");
}

TEST_F(Driver, WriteBackWithoutARequestBehindItOnlyStores)
{
    RW_VAR read = access(3, 4, 1);
    read.subIndex = -1;
    store(read, 2, "1234");
    EXPECT_EQ(PLC_driver.pendingList.size(), 1);
    EXPECT_EQ(value(5, "4", 1), "3412");
}

TEST_F(Driver, StationsKeepTheirOwnValues)
{
    settings.multiStation = 1;
    store(access(5, 100, 2, "", 1), 4, "01020304");
    store(access(5, 100, 1, "", 2), 2, "0A0B");
    store(access(0, 16, 2, "", 1), 2, "AA55");
    EXPECT_EQ(PLC_driver.extendList.size(), 5);
    EXPECT_EQ(value(5, "100", 2), "02010403");
    EXPECT_EQ(value(5, "100", 1, 2), "0B0A");
    EXPECT_EQ(value(3, "100.8", 2), "0100");
    EXPECT_EQ(value(7, "100", 3), "04030201");
    EXPECT_EQ(value(7, "100", 1), "") << "unlike in the shared image";
    EXPECT_EQ(value(0, "22", 3), "000101");
    EXPECT_EQ(PLC_driver.extendList.size(), 5) << "reading known values adds no record";
    EXPECT_EQ(value(4, "7", 1, 4), "0000");
    EXPECT_EQ(PLC_driver.extendList.size(), 6) << "reading an unknown one does";
    EXPECT_EQ(record(5), "00000000");
    EXPECT_EQ(PLC_driver.holdingRegisters[100], 0);
}

TEST_F(Driver, LastRecordOfAStoreIsStretchedToTheWholeData)
{
    settings.multiStation = 1;
    store(access(5, 10, 2), 4, "0102");
    EXPECT_EQ(record(0), "0201");
    EXPECT_EQ(record(1), "00000000") << "its bytes were missing";
    store(access(0, 8, 3), 3, "AABBCC");
    EXPECT_EQ(record(4), "CC0000");
    store(access(5, 10, 0), 0, "");
    EXPECT_EQ(record(0), "") << "a store that touches no record does it to the first";
    EXPECT_EQ(value(5, "10", 1), "0000");
    EXPECT_EQ(value(2, "10.0", 1), "00");
    PLC_driver.extendList.clear();
    store(access(5, 10, 0), 0, "");
    EXPECT_TRUE(PLC_driver.extendList.isEmpty());
}

TEST_F(Driver, RecordsAreFoundWhoeverMadeThem)
{
    const auto add = [](int address) {
        EXTENDVAR var;
        var.station = 1;
        var.area = 5;
        var.address = address;
        PLC_driver.extendList.append(var);
    };
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(ExtendFindSameVar(1, 5, i), i);
    add(1000);
    EXPECT_EQ(ExtendFindSameVar(1, 5, 1000), 300) << "appended directly";
    add(7);
    EXPECT_EQ(ExtendFindSameVar(1, 5, 7), 7) << "the first one wins";
    EXPECT_EQ(ExtendFindSameVar(2, 5, 7), 302);
    EXPECT_EQ(ExtendFindSameVar(1, 4, 7), 303);
    PLC_driver.extendList.clear();
    EXPECT_EQ(ExtendFindSameVar(1, 5, 9), 0) << "cleared directly";
    for (int i = 0; i < 500; ++i)
        ExtendFindSameVar(1, 5, i);
    PLC_driver.extendList.clear();
    for (int i = 0; i < 500; ++i)
        add(5000 - i);
    EXPECT_EQ(ExtendFindSameVar(1, 5, 4990), 10) << "cleared and filled again to the same size";
    PLC_driver.extendList[10].address = 1;
    EXPECT_EQ(ExtendFindSameVar(1, 5, 4990), 500) << "changed in place";
}

TEST_F(Driver, HostWritesPerStation)
{
    settings.multiStation = 1;
    settings.writeMode = 0;
    write(5, "4", 2, "34127856", 0, 0, 3);
    write(7, "6", 2, "78563412", 0, 0, 3);
    write(3, "4.9", 1, "01", 0, 0, 3);
    write(3, "4.2", 1, "00", 0, 0, 3);
    write(3, "5.0", 1, "02", 0, 0, 3);
    write(0, "9", 3, "010101", 0, 0, 3);
    write(0, "10", 1, "02", 0, 0, 3);
    EXPECT_EQ(value(5, "4", 4, 3), "3012785634127856");
    EXPECT_EQ(value(0, "8", 4, 3), "00010001");
    EXPECT_EQ(record(ExtendFindSameVar(3, 0, 8)), "0A") << "a coil write leaves one byte";
    RW_VAR several = access(3, 64 + 17, 2, "0101", 3);
    WriteDataToLocal(&several);
    EXPECT_EQ(value(5, "5", 1, 3), "7A56") << "the start address alone picks the bit";
    EXPECT_EQ(write(7, "6", 1, "0000", 0, 0, 3), 1);
    EXPECT_EQ(value(7, "6", 2, 3), "78563412") << "half a pair is not written";
    write(7, "0", 2, "04030201", 0, 0, 3);
    EXPECT_EQ(value(5, "0", 2, 3), "02010403") << "the first register of all";
    RW_VAR tooShort = access(5, 0, 2, "AABBCC", 3);
    WriteDataToLocal(&tooShort);
    EXPECT_EQ(value(5, "0", 2, 3), "AABB0403") << "a register without both bytes stays";
    const int records = PLC_driver.extendList.size();
    RW_VAR none = access(5, -2, 2, "11112222", 3), readOnly = access(4, 0, 1, "1111", 3);
    WriteDataToLocal(&none);
    WriteDataToLocal(&readOnly);
    EXPECT_EQ(PLC_driver.extendList.size(), records);
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
        {"a count past the table", 0, 5, "0", INT_MAX, "", 1, "5:0*65536"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        PLC_driver.writeList.clear();
        settings.writeBlockSize = row.block;
        EXPECT_EQ(write(row.area, row.address, row.count, row.value), row.result);
        EXPECT_EQ(listed(PLC_driver.writeList), row.pieces);
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
    EXPECT_EQ(var.hostId, 7);
    EXPECT_EQ(var.hostItem, 8);
    EXPECT_EQ(var.rwFlag, 1);
    EXPECT_EQ(var.remoteMode, 3);
    EXPECT_EQ(var.linkId, 2);
    EXPECT_EQ(var.tagText, QString::fromLatin1("tag"));
    EXPECT_EQ(var.addressText, QString::fromLatin1("8"));
    EXPECT_EQ(value(5, "8", 1), "0000") << "the image waits for the request";
    settings.multiStation = 1;
    write(5, "9", 1, "0100", 0, 0, 6);
    EXPECT_EQ(PLC_driver.writeList.at(1).station, 6);
}

TEST_F(Driver, WhileTheStationFailsWritesShowAtOnce)
{
    PLC_driver.lastFailed = true;
    write(5, "8", 1, "3412");
    write(0, "8", 1, "01");
    EXPECT_EQ(PLC_driver.writeList.size(), 2);
    EXPECT_EQ(value(5, "8", 1), "3412");
    EXPECT_EQ(value(0, "8", 1), "01");
}

TEST_F(Driver, ImageOnlyWritesQueueNothing)
{
    settings.writeMode = 1;
    EXPECT_EQ(write(5, "8", 1, "3412"), 1);
    EXPECT_EQ(write(4, "8", 1, "3412"), 1) << "read-only, and still no error";
    EXPECT_EQ(value(5, "8", 1), "3412");
    EXPECT_EQ(value(4, "8", 1), "0000");
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}
