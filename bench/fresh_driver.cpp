// SPDX-License-Identifier: MIT
#include "fresh_driver.h"

#include <algorithm>

using namespace modbus_driver;

namespace bench {

namespace {

CommSettings settings;

void writeDone(int, int, int, int) {}
void itemNotify(QList<RW_VAR> *, int, int) {}

} // namespace

const char *nameOf(ImageMode mode)
{
    return mode == Shared ? "shared" : "per_station";
}

CommSettings &freshDriver(ImageMode mode)
{
    settings = CommSettings();
    settings.writeBlockSize = 125;
    settings.defaultStation = 1;
    settings.multiStation = mode;
    settings.writeMode = 2;
    SetComInfo(&settings);
    RegistCallBackFuncIntf(writeDone, itemNotify);

    Modbus_TCPIP_RTU_M &driver = PLC_driver;
    driver.readList = QList<RW_VAR>();
    driver.writeList = QList<RW_VAR>();
    driver.onceReadList = QList<RW_VAR>();
    driver.pendingList = QList<Protocol>();
    driver.extendList = QList<EXTENDVAR>();
    driver.disabledStations.clear();
    driver.result = RW_VAR();
    driver.lastFailed = false;
    std::fill_n(driver.inputRegisters, int(ImageRegisters), quint16(0));
    std::fill_n(driver.holdingRegisters, int(ImageRegisters), quint16(0));
    return settings;
}

RW_VAR readOf(int area, int start, int length)
{
    RW_VAR var;
    var.hostItem = -1;
    var.addressText = QString::number(start);
    var.area = area;
    var.startAddress = start;
    var.station = 1;
    var.dataLength = length;
    return var;
}

} // namespace bench
