// SPDX-License-Identifier: MIT
// State after loading, what the host sets up, station switches, status codes, checksums, addresses.
#include "driver_fixture.h"

#include <algorithm>

typedef DriverFixture Control;

namespace {

const QByteArray numbersAsLoaded = driverNumbers();
const int areasAsLoaded[] = {LB, LW, RWI};

} // namespace

TEST_F(Control, CallsThatOnlyHostsUse)
{
    EXPECT_TRUE(driverNumbers() == numbersAsLoaded) << "loading and construction differ";
    EXPECT_EQ(areasAsLoaded[0] | areasAsLoaded[1] | areasAsLoaded[2], 0);
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
    EXPECT_EQ(GetDriverReturnValue(2), 41) << "nothing is in flight";
    PLC_driver.pendingList.append(Protocol());
    const Rows<int, int, int> rows = {{2, -1, 41}, {2, 0, 41}, {2, 11, 52}, {2, 12, 41}, {-1, 1, 200}, {8, 1, 200}};
    for (const auto &[outcome, hostId, status] : rows) {
        PLC_driver.pendingList[0].var.hostId = hostId;
        EXPECT_EQ(GetDriverReturnValue(outcome), status) << hostId;
    }
}

TEST_F(Control, ChecksumsAndDigits)
{
    const unsigned char request[] = {1, 3, 0, 0, 0, 10, 255}, sum256[] = {128, 128, 255};
    const std::vector<unsigned char> many(301, 255);
    EXPECT_EQ(CalCRC(request, 6), 0xCDC5);
    EXPECT_EQ(CalCRC(request, 0), 0xFFFF);
    EXPECT_EQ(CalSUM(many.data(), 300), 0x2AD4);
    EXPECT_EQ(CalLRC(request, 6), 0xF2);
    EXPECT_EQ(CalLRC(sum256, 2), 256);
    EXPECT_EQ(CalXOR(request, 6), 0x08);
    EXPECT_EQ(CalXOR(request, 0), 0x01) << "the first byte counts always";
    for (const auto &[value, digit] : Rows<int, int>{{0, '0'}, {9, '9'}, {10, 'A'}, {16, 'G'}, {-1, '/'}})
        EXPECT_EQ(DigitalToASCII(value), digit);
    for (const auto &[digit, value] : Rows<int, int>{{'/', 0}, {'9', 9}, {'?', 15}, {'@', 0}, {'A', 10}, {'a', 42}})
        EXPECT_EQ(ASCIIToDigital(digit), value);
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
    QByteArray out;
    for (const auto &[area, written, address] : rows) {
        const QString text = QString::fromLatin1(written);
        EXPECT_EQ(StringAddressToInt(area, text), address) << area << " " << written;
        EXPECT_EQ(PLCAddressChangeIntef(area, text), address) << area << " " << written;
        EXPECT_EQ(GetRegisterData(0, area, text, 1, out, 1), address >= 0) << area << " " << written;
    }
}
