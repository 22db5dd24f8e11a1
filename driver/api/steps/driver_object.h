// SPDX-License-Identifier: MIT
/// \file
/// The one driver object: all state that the driver shares with its host. It is constructed when the
/// library is loaded and destroyed when the process exits.
///
/// stationMutex and imageMutex may be taken while listMutex is held. No other two locks are held together,
/// and none is recursive. Only the communication thread, which calls ComCommunication and DataCom, uses
/// pendingList and the counters of the cycle. Size and member offsets of the object are part of the ABI.

#pragma once

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QMutex>

#include <atomic>

#include "../export.h"
#include "../records.h"

/// \addtogroup Steps
/// @{

namespace modbus_driver {

/// Sizes of the register image. The bit areas hold one byte more than the 65,536 addresses need.
enum ImageSize {
    ImageBitBytes = 8193,
    ImageBits = ImageBitBytes * 8,
    ImageRegisters = 65536,
    ImageRegisterBits = ImageRegisters * 16,
};

/// The queue that the request in flight came from, Modbus_TCPIP_RTU_M::currentKind.
enum RequestOrigin { OriginPoll = 0, OriginWrite = 1, OriginOnceRead = 2, OriginNone = 100 };

} // namespace modbus_driver

/// The driver's state; PLC_driver is the only instance.
class Modbus_TCPIP_RTU_M
{
public:
    CommSettings *comInfo = nullptr; ///< the host's record, not owned; null until SetComInfo
    QList<RW_VAR> readList;          ///< cyclic reads, polled from the head round-robin; listMutex
    QList<RW_VAR> writeList;         ///< queued writes; listMutex
    QList<RW_VAR> onceReadList;      ///< queued one-shot reads; listMutex
    QList<RW_VAR> spareVarList;      ///< unused
    QList<Protocol> pendingList;     ///< built requests, the head is in flight; communication thread
    QList<EXTENDVAR> extendList;     ///< per-station values; imageMutex
    QMap<int, int> disabledStations; ///< the keys are the disabled stations; stationMutex

    /// Called with listMutex held when a queued write or one-shot read has ended.
    void (*writeDoneCallBack)(int hostChannel, int hostId, int hostItem, int outcome) = nullptr;
    /// Called with listMutex held when a queued write was handled or a request given up.
    void (*itemNotifyCallBack)(QList<RW_VAR> *list, int hostId, int flag) = nullptr;

    QMutex listMutex;    ///< the three queues, the bursts, currentKind, the queue entry in `result`
    QMutex imageMutex;   ///< the image arrays and extendList
    QMutex stationMutex; ///< disabledStations

    RW_VAR result; ///< what DataCom returns: a status, and the queue entry that was retired last
    int currentKind = modbus_driver::OriginNone; ///< a RequestOrigin
    int writeBurst = 0;                          ///< writes in a row, at most 5
    int onceBurst = 0;                           ///< one-shot reads in a row, at most 5
    int cyclicDone = 0; ///< good local replies counted towards the current pass over readList

    /// The last exchange failed. One byte. The communication thread writes it, every thread reads it.
    std::atomic<bool> lastFailed{false};

    quint8 coilBits[modbus_driver::ImageBitBytes] = {};         ///< area 0, bit b is bit b % 8 of byte b / 8
    quint8 inputBits[modbus_driver::ImageBitBytes] = {};        ///< area 1, same layout
    quint16 inputRegisters[modbus_driver::ImageRegisters] = {}; ///< areas 2, 4 and 6, native byte order
    quint16 holdingRegisters[modbus_driver::ImageRegisters] = {}; ///< areas 3, 5 and 7, native byte order
};

/// The driver object.
extern MODBUS_TCPIP_RTU_M_API Modbus_TCPIP_RTU_M PLC_driver;

extern "C" {
// The host's own areas, set by FlashLocalRegister. The driver does not use them.
extern MODBUS_TCPIP_RTU_M_API int LB;  ///< the host's local bit area
extern MODBUS_TCPIP_RTU_M_API int LW;  ///< the host's local word area
extern MODBUS_TCPIP_RTU_M_API int RWI; ///< the host's third area
}

/// Copies every field except `data`, which becomes empty: the result record has no value bytes. The caller
/// holds listMutex when another thread may use one of the two records.
MODBUS_TCPIP_RTU_M_API void passRetValue(const RW_VAR &from, RW_VAR &to);

/// @}
