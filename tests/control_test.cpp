// SPDX-License-Identifier: MIT
// State after loading, what the host sets up, station switches, status codes, checksums, addresses.
#include "driver_fixture.h"

#include <algorithm>

typedef DriverFixture Control;

TEST_F(Control, CallsThatOnlyHostsUse)
{
    FlashLocalRegister(1, 2, 3);
    EXPECT_EQ(LB * 100 + LW * 10 + RWI, 123);
    EXPECT_EQ(QueryFinishFlag(), 1);
}

TEST_F(Control, SettingsRecordLosesItsTwoHostCountersOnly)
{
    CommSettings other;
    int *words = reinterpret_cast<int *>(&other);
    std::fill(words, words + 19, 7);
    SetComInfo(&other);
    EXPECT_EQ(words[10] + words[13], 0);
    EXPECT_EQ(std::count(words, words + 19, 7), 17);
    EXPECT_EQ(PLC_driver.comInfo, &other);
}

TEST_F(Control, StationSwitches)
{
    const Rows<int, int, QList<int>> rows = {
        {5, 0, {5}}, {6, 0, {5, 6}}, {5, 2, {5, 6}}, {7, 2, {5, 6}}, {5, 1, {6}}, {0, 0, {0, 6}}, {-1, 0, {}},
    };
    for (const auto &[station, enable, off] : rows) {
        (station == 6 ? EnableEthernet : EnCommStation)(station, enable);
        EXPECT_EQ(PLC_driver.disabledStations.keys(), off) << station << ' ' << enable;
        EXPECT_EQ(Ethernetcontains(station), off.contains(station));
        EXPECT_EQ(PLC_driver.disabledStations.values().count(0), off.size());
    }
}

TEST_F(Control, StatusCodesShiftByUsualItemsOnly)
{
    PLC_driver.pendingList.append(Protocol());
    for (const auto &[hostId, status] : Rows<int, int>{{-1, 41}, {0, 41}, {11, 52}, {12, 41}}) {
        PLC_driver.pendingList[0].var.hostId = hostId;
        EXPECT_EQ(GetDriverReturnValue(2), status) << hostId;
    }
}

TEST_F(Control, Checksums)
{
    const QByteArray request = bytes("01030000000A"), many(300, '\xFF'), sum256 = bytes("8080");
    const auto raw = [](const QByteArray &b) { return reinterpret_cast<const unsigned char *>(b.constData()); };
    EXPECT_EQ(CalCRC(raw(request), 6), 0xCDC5);
    EXPECT_EQ(CalCRC(raw(request), 0), 0xFFFF);
    EXPECT_EQ(CalSUM(raw(many), 300), 0x2AD4);
    EXPECT_EQ(CalLRC(raw(request), 6), 0xF2);
    EXPECT_EQ(CalLRC(raw(sum256), 2), 256);
    EXPECT_EQ(CalXOR(raw(request), 6), 0x08);
    EXPECT_EQ(CalXOR(raw(request), 0), 0x01) << "the first byte counts always";
}

TEST_F(Control, DigitsBeyondTheUsualOnesToo)
{
    const Rows<int (*)(int), int, int> rows = {
        {&DigitalToASCII, 0, '0'},  {&DigitalToASCII, 9, '9'},  {&DigitalToASCII, 10, 'A'}, {&DigitalToASCII, 16, 'G'},
        {&DigitalToASCII, -1, '/'}, {&ASCIIToDigital, '/', 0},  {&ASCIIToDigital, '9', 9},  {&ASCIIToDigital, '?', 15},
        {&ASCIIToDigital, '@', 0},  {&ASCIIToDigital, 'A', 10}, {&ASCIIToDigital, 'a', 42},
    };
    for (const auto &[convert, from, to] : rows)
        EXPECT_EQ(convert(from), to) << from;
}

TEST_F(Control, AddressTextToNumber)
{
    const Rows<int, Text, int> rows = {
        {Registers, "100", 100},      {Coils, "17", 17},
        {Registers, "12.5", 0},       {Inputs, "0x10", 0},
        {Registers, "abc", 0},        {Registers, "-3", -3},
        {InputBit, "3.4", 52},        {RegisterBit, "0.15", 15},
        {RegisterBit, "10.16", 176},  {InputBit, "3", -1},
        {InputBit, "", -1},           {InputBit, "3.", 48},
        {InputBit, ".7", 7},          {InputBit, "1.2.3", 18},
        {RegisterBit, "-1.3", -13},   {Registers, "1:", 0},
        {Registers, "9999999999", 0}, {InputBit, "1.+2.3", 18},
        {InputPairs, "3.4", 0},       {RegisterBit, "x.9", 9},
        {Registers, "65536", 65536},  {RegisterBit, "2147483647.1", -15},
    };
    for (const auto &[area, written, address] : rows) {
        const QString text = QString::fromLatin1(written);
        EXPECT_EQ(StringAddressToInt(area, text), address) << area << " " << written;
        EXPECT_EQ(PLCAddressChangeIntef(area, text), address) << area << " " << written;
    }
}
