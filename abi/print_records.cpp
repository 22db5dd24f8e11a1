// SPDX-License-Identifier: MIT
// Prints sizes and field offsets of the records and of the driver object, one in each line.
#include "modbus_tcpip_rtu_m.h"

#include <cstddef>
#include <cstdio>

#define SIZE(record) std::printf("%-38s           size %6zu\n", #record, sizeof(record))
#define FIELD(record, field)                                                                                 \
    std::printf("%-38s at %6zu, size %6zu\n", #record "." #field, offsetof(record, field),                   \
                sizeof(record::field))

namespace {

void printAccess()
{
    SIZE(RW_VAR);
    FIELD(RW_VAR, hostId);
    FIELD(RW_VAR, hostItem);
    FIELD(RW_VAR, rwFlag);
    FIELD(RW_VAR, remoteMode);
    FIELD(RW_VAR, linkId);
    FIELD(RW_VAR, status);
    FIELD(RW_VAR, tagText);
    FIELD(RW_VAR, addressText);
    FIELD(RW_VAR, area);
    FIELD(RW_VAR, startAddress);
    FIELD(RW_VAR, station);
    FIELD(RW_VAR, dataLength);
    FIELD(RW_VAR, subIndex);
    FIELD(RW_VAR, aux);
    FIELD(RW_VAR, data);
}

void printRequest()
{
    SIZE(Protocol);
    FIELD(Protocol, frame);
    FIELD(Protocol, frameLength);
    FIELD(Protocol, replyLength);
    FIELD(Protocol, replyHeaderLength);
    FIELD(Protocol, replyDataLength);
    FIELD(Protocol, var);
    FIELD(Protocol, reserved);
}

void printSettings()
{
    SIZE(CommSettings);
    FIELD(CommSettings, hostWord0);
    FIELD(CommSettings, hostWord1);
    FIELD(CommSettings, hostWord2);
    FIELD(CommSettings, hostWord3);
    FIELD(CommSettings, writeBlockSize);
    FIELD(CommSettings, hostWord5);
    FIELD(CommSettings, defaultStation);
    FIELD(CommSettings, retryLimit);
    FIELD(CommSettings, failCount);
    FIELD(CommSettings, multiStation);
    FIELD(CommSettings, cfgWord10);
    FIELD(CommSettings, repliesExpected);
    FIELD(CommSettings, repliesReceived);
    FIELD(CommSettings, cfgWord13);
    FIELD(CommSettings, remoteMode);
    FIELD(CommSettings, linkId);
    FIELD(CommSettings, writeMode);
    FIELD(CommSettings, cycleDone);
    FIELD(CommSettings, hostChannel);
}

void printItem()
{
    SIZE(VAR_ITEM);
    FIELD(VAR_ITEM, hostByte0);
    FIELD(VAR_ITEM, area);
    FIELD(VAR_ITEM, station);
    FIELD(VAR_ITEM, hostByte3);
    FIELD(VAR_ITEM, hostWord);
    FIELD(VAR_ITEM, addressText);
    FIELD(VAR_ITEM, tagText);
    FIELD(VAR_ITEM, count);
}

void printStationValue()
{
    SIZE(EXTENDVAR);
    FIELD(EXTENDVAR, station);
    FIELD(EXTENDVAR, area);
    FIELD(EXTENDVAR, address);
    FIELD(EXTENDVAR, value);
}

// The size is part of the ABI too. A host that is linked with the library and is not position-independent
// reserves memory of this size for PLC_driver.
void printDriver()
{
    SIZE(PLC_driver);
    FIELD(Modbus_TCPIP_RTU_M, comInfo);
    FIELD(Modbus_TCPIP_RTU_M, readList);
    FIELD(Modbus_TCPIP_RTU_M, writeList);
    FIELD(Modbus_TCPIP_RTU_M, onceReadList);
    FIELD(Modbus_TCPIP_RTU_M, spareVarList);
    FIELD(Modbus_TCPIP_RTU_M, pendingList);
    FIELD(Modbus_TCPIP_RTU_M, extendList);
    FIELD(Modbus_TCPIP_RTU_M, disabledStations);
    FIELD(Modbus_TCPIP_RTU_M, writeDoneCallBack);
    FIELD(Modbus_TCPIP_RTU_M, itemNotifyCallBack);
    FIELD(Modbus_TCPIP_RTU_M, listMutex);
    FIELD(Modbus_TCPIP_RTU_M, imageMutex);
    FIELD(Modbus_TCPIP_RTU_M, stationMutex);
    FIELD(Modbus_TCPIP_RTU_M, result);
    FIELD(Modbus_TCPIP_RTU_M, currentKind);
    FIELD(Modbus_TCPIP_RTU_M, writeBurst);
    FIELD(Modbus_TCPIP_RTU_M, onceBurst);
    FIELD(Modbus_TCPIP_RTU_M, cyclicDone);
    FIELD(Modbus_TCPIP_RTU_M, lastFailed);
    FIELD(Modbus_TCPIP_RTU_M, coilBits);
    FIELD(Modbus_TCPIP_RTU_M, inputBits);
    FIELD(Modbus_TCPIP_RTU_M, inputRegisters);
    FIELD(Modbus_TCPIP_RTU_M, holdingRegisters);
}

} // namespace

int main()
{
    printAccess();
    printRequest();
    printSettings();
    printItem();
    printStationValue();
    printDriver();
}
