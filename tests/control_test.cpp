// SPDX-License-Identifier: MIT
// State after loading, what the host sets up, station switches, status codes, checksums, addresses.
#include "driver_fixture.h"

#include <algorithm>

TEST(Load, LeavesAnEmptyDriverWithAZeroImage)
{
    const Modbus_TCPIP_RTU_M &d = PLC_driver;
    EXPECT_EQ(d.comInfo, nullptr);
    EXPECT_TRUE(d.readList.isEmpty() && d.writeList.isEmpty() && d.onceReadList.isEmpty() && d.pendingList.isEmpty());
    EXPECT_EQ(d.currentKind, 100);
    EXPECT_EQ(LB | LW | RWI | d.writeBurst | d.onceBurst | d.cyclicDone, 0);
    EXPECT_FALSE(d.lastFailed);
    EXPECT_EQ(d.result.status, 0);
    const auto zero = [](int element) { return element == 0; };
    EXPECT_TRUE(std::all_of(std::begin(d.coilBits), std::end(d.coilBits), zero));
    EXPECT_TRUE(std::all_of(std::begin(d.holdingRegisters), std::end(d.holdingRegisters), zero));
}

TEST_F(Driver, SettingsRecordLosesItsTwoHostCountersOnly)
{
    CommSettings other;
    int *words = reinterpret_cast<int *>(&other);
    std::fill(words, words + 19, 7);
    SetComInfo(&other);
    for (int i = 0; i < 19; ++i)
        EXPECT_EQ(words[i], i == 10 || i == 13 ? 0 : 7) << "word " << i;
    EXPECT_EQ(PLC_driver.comInfo, &other);
}

TEST_F(Driver, LocalAreasAreKeptInTheirOrder)
{
    FlashLocalRegister(1, 2, 3);
    EXPECT_EQ(LB, 1);
    EXPECT_EQ(LW, 2);
    EXPECT_EQ(RWI, 3);
    EXPECT_EQ(QueryFinishFlag(), 1);
}

TEST_F(Driver, StationSwitches)
{
    EnCommStation(5, 0);
    EnableEthernet(6, 0);
    EnCommStation(5, 2);
    EXPECT_EQ(PLC_driver.disabledStations, (QMap<int, int>{{5, 0}, {6, 0}}));
    EnCommStation(5, 1);
    EXPECT_FALSE(Ethernetcontains(5));
    EXPECT_TRUE(Ethernetcontains(6));
    EnCommStation(0, 0);
    EXPECT_TRUE(Ethernetcontains(6));
    EnCommStation(-1, 0);
    EXPECT_TRUE(PLC_driver.disabledStations.isEmpty());
}

TEST_F(Driver, StatusCodesShiftByTheItemOfTheRequestInFlight)
{
    const int plain[] = {1, 11, 41, 71, 100, 111, 141, 171, 200};
    const struct
    {
        int hostId, shift;
    } items[] = {{0, 0}, {1, 1}, {3, 3}, {11, 11}, {12, 0}, {-1, 0}};
    for (const auto &item : items) {
        Protocol request;
        request.var.hostId = item.hostId;
        PLC_driver.pendingList = QList<Protocol>() << request;
        for (int outcome = 0; outcome <= 8; ++outcome) {
            const bool fixed = outcome == 0 || outcome == 4 || outcome == 8;
            EXPECT_EQ(GetDriverReturnValue(outcome), plain[outcome] + (fixed ? 0 : item.shift))
                << "item " << item.hostId << " outcome " << outcome;
        }
    }
    PLC_driver.pendingList.clear();
    EXPECT_EQ(GetDriverReturnValue(2), 41) << "with nothing in flight";
}

TEST(Records, StartWithZeros)
{
    const CommSettings settings;
    for (int i = 0; i < 19; ++i)
        EXPECT_EQ(reinterpret_cast<const int *>(&settings)[i], 0) << "word " << i;
    const RW_VAR var;
    EXPECT_EQ(origin(var) + listed({var}), "0 0 0 0 0 0 0  0/0:0*0");
    EXPECT_EQ(var.status, 0);
    const Protocol request;
    EXPECT_EQ(request.frameLength | request.replyLength | request.replyHeaderLength | request.replyDataLength, 0);
    EXPECT_EQ(request.reserved[0] | request.reserved[1] | request.reserved[2], 0);
    const VAR_ITEM item;
    EXPECT_EQ(item.hostByte0 | item.area | item.station | item.hostByte3 | item.hostWord | item.count, 0);
    const EXTENDVAR value;
    EXPECT_EQ(value.station | value.area | value.address, 0);
}

TEST(ResultRecord, CarriesEverythingButTheBytes)
{
    RW_VAR from = access(5, 100, 2, "3412", 7), to = access(0, 0, 0, "FF");
    from.tagText = QString::fromLatin1("tag");
    from.aux = 4;
    passRetValue(from, to);
    EXPECT_EQ(to.tagText, from.tagText);
    EXPECT_EQ(to.station, 7);
    EXPECT_EQ(to.aux, 4);
    EXPECT_TRUE(to.data.isEmpty());
}

TEST(Checksums, KnownValues)
{
    const auto raw = [](const QByteArray &b) { return reinterpret_cast<const unsigned char *>(b.constData()); };
    const QByteArray request = bytes("01030000000A"), many(300, '\xFF'), sum256 = bytes("8080"), one = bytes("5A");
    EXPECT_EQ(CalCRC(raw(request), 6), 0xCDC5);
    EXPECT_EQ(CalCRC(raw(request), 0), 0xFFFF);
    EXPECT_EQ(CalSUM(raw(many), 300), 0x2AD4);
    EXPECT_EQ(CalSUM(raw(many), 0), 0);
    EXPECT_EQ(CalLRC(raw(request), 6), 0xF2);
    EXPECT_EQ(CalLRC(raw(sum256), 2), 256);
    EXPECT_EQ(CalLRC(raw(sum256), 0), 256);
    EXPECT_EQ(CalXOR(raw(request), 6), 0x01 ^ 0x03 ^ 0x0A);
    EXPECT_EQ(CalXOR(raw(request), 5), 0x01 ^ 0x03);
    EXPECT_EQ(CalXOR(raw(one), 0), 0x5A);
}

TEST(Digits, OddCodesIncluded)
{
    const struct
    {
        int from, to;
    } toAscii[] = {{0, '0'}, {9, '9'}, {10, 'A'}, {15, 'F'}, {16, 'G'}, {-1, '/'}},
      toDigit[] = {{'/', 0}, {'0', 0}, {'9', 9}, {63, 15}, {64, 0}, {'A', 10}, {'F', 15}, {'a', 42}};
    for (const auto &row : toAscii)
        EXPECT_EQ(DigitalToASCII(row.from), row.to) << row.from;
    for (const auto &row : toDigit)
        EXPECT_EQ(ASCIIToDigital(row.from), row.to) << row.from;
}

TEST(Addresses, TextToNumber)
{
    const struct
    {
        int area;
        const char *text;
        int address;
    } rows[] = {
        {5, "100", 100},      {0, "17", 17},
        {5, "12.5", 0},       {1, "0x10", 0},
        {5, "abc", 0},        {5, "-3", -3},
        {2, "3.4", 52},       {3, "0.15", 15},
        {3, "10.16", 176},    {2, "3", -1},
        {2, "", -1},          {2, "3.", 48},
        {2, ".7", 7},         {2, "1.2.3", 18},
        {3, "-1.3", -13},     {5, "1:", 0},
        {5, "9999999999", 0}, {2, "1.+2.3", 18},
        {6, "3.4", 0},        {3, "x.9", 9},
        {5, "65536", 65536},  {3, "2147483647.1", -15},
    };
    for (const auto &row : rows) {
        const QString text = QString::fromLatin1(row.text);
        EXPECT_EQ(StringAddressToInt(row.area, text), row.address) << row.area << " " << row.text;
        EXPECT_EQ(PLCAddressChangeIntef(row.area, text), row.address) << row.area << " " << row.text;
    }
}

TEST(Areas, RequestAreas)
{
    const int expected[] = {-1, 0, 1, 4, 5, 4, 5, 4, 5, 8};
    for (int area = -1; area <= 8; ++area)
        EXPECT_EQ(getPlcReg(area), expected[area + 1]) << area;
}
