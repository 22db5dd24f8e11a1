// SPDX-License-Identifier: MIT
// Makes the driver as it was after loading, for a new project in the same process. docs/host-guide.md tells
// when.
#pragma once

#include <modbus_tcpip_rtu_m.h>

#include <algorithm>
#include <iterator>

// `settings` is the record that SetComInfo got. No other thread may be inside a call of the driver, and
// none is between ComCommunication and DataCom.
inline void startAnew(Modbus_TCPIP_RTU_M &driver, CommSettings &settings)
{
    driver.readList.clear();
    driver.writeList.clear();
    driver.onceReadList.clear();
    driver.pendingList.clear();
    driver.extendList.clear();
    driver.disabledStations.clear();
    driver.result = RW_VAR();
    driver.currentKind = modbus_driver::OriginNone;
    driver.writeBurst = driver.onceBurst = driver.cyclicDone = 0;
    driver.lastFailed = false;
    std::fill(std::begin(driver.coilBits), std::end(driver.coilBits), quint8(0));
    std::fill(std::begin(driver.inputBits), std::end(driver.inputBits), quint8(0));
    std::fill(std::begin(driver.inputRegisters), std::end(driver.inputRegisters), quint16(0));
    std::fill(std::begin(driver.holdingRegisters), std::end(driver.holdingRegisters), quint16(0));
    settings.failCount = settings.repliesExpected = settings.repliesReceived = settings.cycleDone = 0;
}
