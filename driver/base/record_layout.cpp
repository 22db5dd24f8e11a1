// SPDX-License-Identifier: MIT
// Hosts and driver are built separately, so the layouts of the records are checked at compile time: order and
// position of the fields on every machine, the exact sizes on the 32-bit panel.
#include "../api/steps/driver_object.h"

#include <cstddef>

namespace {

constexpr std::size_t pointer = sizeof(void *);

/// `size` rounded up to the alignment of a pointer, which texts and byte arrays need.
constexpr std::size_t aligned(std::size_t size)
{
    return (size + pointer - 1) / pointer * pointer;
}

static_assert(sizeof(int) == 4 && sizeof(QString) == pointer && sizeof(QByteArray) == pointer,
              "numbers are one word, texts and byte arrays one pointer");

#define FIELD_AT(record, field, offset)                                                                      \
    static_assert(offsetof(record, field) == (offset), #record "::" #field)

FIELD_AT(RW_VAR, hostId, 0);
FIELD_AT(RW_VAR, hostItem, 4);
FIELD_AT(RW_VAR, rwFlag, 8);
FIELD_AT(RW_VAR, remoteMode, 12);
FIELD_AT(RW_VAR, linkId, 16);
FIELD_AT(RW_VAR, status, 20);
FIELD_AT(RW_VAR, tagText, 24);
FIELD_AT(RW_VAR, addressText, 24 + pointer);
FIELD_AT(RW_VAR, area, 24 + 2 * pointer);
FIELD_AT(RW_VAR, startAddress, 28 + 2 * pointer);
FIELD_AT(RW_VAR, station, 32 + 2 * pointer);
FIELD_AT(RW_VAR, dataLength, 36 + 2 * pointer);
FIELD_AT(RW_VAR, subIndex, 40 + 2 * pointer);
FIELD_AT(RW_VAR, aux, 44 + 2 * pointer);
FIELD_AT(RW_VAR, data, 48 + 2 * pointer);
static_assert(sizeof(RW_VAR) == 48 + 3 * pointer, "RW_VAR: 60 bytes on the panel");

FIELD_AT(Protocol, frame, 0);
FIELD_AT(Protocol, frameLength, pointer);
FIELD_AT(Protocol, replyLength, pointer + 4);
FIELD_AT(Protocol, replyHeaderLength, pointer + 8);
FIELD_AT(Protocol, replyDataLength, pointer + 12);
FIELD_AT(Protocol, var, pointer + 16);
FIELD_AT(Protocol, reserved, pointer + 16 + sizeof(RW_VAR));
static_assert(sizeof(Protocol) == aligned(pointer + 16 + sizeof(RW_VAR) + 12),
              "Protocol: 92 bytes on the panel");

FIELD_AT(CommSettings, writeBlockSize, 4 * 4);
FIELD_AT(CommSettings, defaultStation, 6 * 4);
FIELD_AT(CommSettings, retryLimit, 7 * 4);
FIELD_AT(CommSettings, failCount, 8 * 4);
FIELD_AT(CommSettings, multiStation, 9 * 4);
FIELD_AT(CommSettings, cfgWord10, 10 * 4);
FIELD_AT(CommSettings, repliesExpected, 11 * 4);
FIELD_AT(CommSettings, repliesReceived, 12 * 4);
FIELD_AT(CommSettings, cfgWord13, 13 * 4);
FIELD_AT(CommSettings, remoteMode, 14 * 4);
FIELD_AT(CommSettings, linkId, 15 * 4);
FIELD_AT(CommSettings, writeMode, 16 * 4);
FIELD_AT(CommSettings, cycleDone, 17 * 4);
FIELD_AT(CommSettings, hostChannel, 18 * 4);
static_assert(sizeof(CommSettings) == 76, "CommSettings: nineteen words");

FIELD_AT(VAR_ITEM, hostByte0, 0);
FIELD_AT(VAR_ITEM, area, 1);
FIELD_AT(VAR_ITEM, station, 2);
FIELD_AT(VAR_ITEM, hostByte3, 3);
FIELD_AT(VAR_ITEM, hostWord, 4);
FIELD_AT(VAR_ITEM, addressText, 8);
FIELD_AT(VAR_ITEM, tagText, 8 + pointer);
FIELD_AT(VAR_ITEM, count, 8 + 2 * pointer);
static_assert(sizeof(VAR_ITEM) == aligned(8 + 2 * pointer + 4), "VAR_ITEM: 20 bytes on the panel");

FIELD_AT(EXTENDVAR, station, 0);
FIELD_AT(EXTENDVAR, area, 4);
FIELD_AT(EXTENDVAR, address, 8);
FIELD_AT(EXTENDVAR, value, aligned(12));
static_assert(sizeof(EXTENDVAR) == aligned(12) + pointer, "EXTENDVAR: 16 bytes on the panel");

#undef FIELD_AT

#define IN_ORDER(first, second)                                                                              \
    static_assert(offsetof(Modbus_TCPIP_RTU_M, first) + sizeof(Modbus_TCPIP_RTU_M::first) <=                 \
                          offsetof(Modbus_TCPIP_RTU_M, second) &&                                            \
                      offsetof(Modbus_TCPIP_RTU_M, second) <                                                 \
                          offsetof(Modbus_TCPIP_RTU_M, first) + sizeof(Modbus_TCPIP_RTU_M::first) + pointer, \
                  #first " is followed by " #second)

static_assert(offsetof(Modbus_TCPIP_RTU_M, comInfo) == 0, "comInfo comes first");
IN_ORDER(comInfo, readList);
IN_ORDER(readList, writeList);
IN_ORDER(writeList, onceReadList);
IN_ORDER(onceReadList, spareVarList);
IN_ORDER(spareVarList, pendingList);
IN_ORDER(pendingList, extendList);
IN_ORDER(extendList, disabledStations);
IN_ORDER(disabledStations, writeDoneCallBack);
IN_ORDER(writeDoneCallBack, itemNotifyCallBack);
IN_ORDER(itemNotifyCallBack, listMutex);
IN_ORDER(listMutex, imageMutex);
IN_ORDER(imageMutex, stationMutex);
IN_ORDER(stationMutex, result);
IN_ORDER(result, currentKind);
IN_ORDER(currentKind, writeBurst);
IN_ORDER(writeBurst, onceBurst);
IN_ORDER(onceBurst, cyclicDone);
IN_ORDER(cyclicDone, lastFailed);
IN_ORDER(lastFailed, coilBits);
IN_ORDER(coilBits, inputBits);
IN_ORDER(inputBits, inputRegisters);
IN_ORDER(inputRegisters, holdingRegisters);
static_assert(sizeof(std::atomic<bool>) == 1, "lastFailed is one byte");

#undef IN_ORDER

} // namespace
