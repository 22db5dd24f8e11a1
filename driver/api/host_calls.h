// SPDX-License-Identifier: MIT
/// \file
/// What a host calls: set-up, the communication cycle, the poll list, the queues, the values, the stations.
///
/// Set up first: SetComInfo, RegistCallBackFuncIntf, FlashLocalRegister, ReCreatReadVarList. Then one thread of the
/// host, the communication thread, alternates ComCommunication and DataCom. All its other threads may read, write
/// and queue at any time. The driver has three locks, none recursive: listMutex (queues), imageMutex (values),
/// stationMutex (switched-off stations). A caller holds none of them.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include "codes.h"
#include "export.h"
#include "records.h"

extern "C" {

/// \name Set-up, before the communication loop starts. None of these takes a lock.
/// @{

/// Hands over the host's settings record and sets its cfgWord13 and cfgWord10 to 0. The record stays the
/// host's; the driver uses it until the next SetComInfo or the end of the process. Call it before any other
/// function: a missing record is not guarded against, and neither is null.
MODBUS_TCPIP_RTU_M_API void SetComInfo(CommSettings *settings);

/// Registers both call-backs. A null call-back is skipped. Both run on the communication thread with listMutex
/// held: they must not call AddListWriteVar, AddListOnceReadVar, ReCreatReadVarList, SetRegisterData (which
/// queues), ComCommunication or DataCom.
///
/// writeDone: an entry of the write queue or of the one-shot reads has left its queue. hostChannel is
/// CommSettings::hostChannel, hostId and hostItem are the entry's, outcome is a WriteDoneOutcome. It is not
/// called for one-shot reads of another link, nor for entries that were dropped, overwritten, or removed with
/// a given-up entry of their group.
///
/// itemNotify: WriteRegister has run for a queued write, whether or not it built a request (never in remote
/// mode), or a request was given up. hostId is that access's. The list is an empty temporary; what the host
/// adds is discarded. flag is always 1.
MODBUS_TCPIP_RTU_M_API void
RegistCallBackFuncIntf(void (*writeDone)(int hostChannel, int hostId, int hostItem, int outcome),
                       void (*itemNotify)(QList<RW_VAR> *list, int hostId, int flag));

/// Keeps the host's three local areas in LB, LW and RWI.
MODBUS_TCPIP_RTU_M_API void FlashLocalRegister(int localBits, int localWords, int thirdArea);

/// Always 1: the driver has no background work to finish. Any thread.
MODBUS_TCPIP_RTU_M_API int QueryFinishFlag();

/// @}
/// \name The communication cycle, on the communication thread only
/// @{

/// The request to send now, or null when there is nothing to send. Writes go first, then one-shot reads, then
/// the poll list; after five writes or one-shot reads in a row their queue waits for a cyclic read. The same
/// request is returned until DataCom has ended it. The host sends `frameLength` bytes of `frame` and hands the
/// reply, or the lack of one, to DataCom; for a `replyLength` of 0 it waits for nothing and hands over length 0.
///
/// The record is the driver's and valid until the next DataCom. Takes listMutex, within it stationMutex and
/// imageMutex, and calls itemNotify for a queued write.
MODBUS_TCPIP_RTU_M_API Protocol *ComCommunication();

/// Ends the exchange of the request in flight: stores, retires, retries or gives up. `reply` holds the bytes
/// received, from the first of the MBAP header on, and `length` their number; 0 means that none came (reply may
/// then be null), and is right for a broadcast.
///
/// Returns the driver's result record, always the same one. Its `status` is a StatusCode: 1 or 100 for success,
/// 0 when the request will be sent again, else the error code with which it was given up; 1 when nothing was in
/// flight. Its other fields name the queue entry that was retired last: after status 0, and after the read half of
/// a bit-in-register write, that is an earlier access. A host that must know copies `var` of the request before this
/// call. `data` is always empty. The content is valid until the next DataCom.
///
/// Holds listMutex from judging to return, imageMutex within it while storing, and calls both call-backs.
MODBUS_TCPIP_RTU_M_API RW_VAR *DataCom(QByteArray *reply, int length);

/// @}
/// \name What to poll
/// @{

/// Replaces the whole poll list by the requests that read all items: sorted by address, neighbours joined up to
/// CommSettings::writeBlockSize registers (or eight times as many bits; below 1 nothing is cut, and nothing joined
/// that does not lie inside a neighbour). Returns the number of requests. Items with a negative address are left
/// out; an item's count is cut at the size of a whole table. An empty list of items empties the poll list and
/// returns 0.
///
/// While multiStation is 0 all requests go to defaultStation, ordered coils, discrete inputs, input registers,
/// holding registers, and areas above 7 are left out. Otherwise requests stand in the order in which each station
/// and area first appeared, and areas above 7 are kept.
///
/// The list stays the host's and is only read. Any thread, but not from a call-back; takes listMutex to put the
/// new list in the old one's place, so the cycle never sees half a list.
MODBUS_TCPIP_RTU_M_API int ReCreatReadVarList(QList<VAR_ITEM> *items);

/// Appends a copy of a finished request to the poll list and returns the number of requests. The caller holds
/// listMutex.
MODBUS_TCPIP_RTU_M_API int AddListReadVar(RW_VAR *var);

/// The address that a text means. Areas 2 and 3 take "register.bit" and give register * 16 + bit; without a point
/// the result is -1, the only error. Every other area takes a decimal number. Text that is no number counts as 0,
/// and no range is checked: bit 16 is bit 0 of the next register, negative numbers stay negative. No lock, any
/// thread.
MODBUS_TCPIP_RTU_M_API int PLCAddressChangeIntef(int area, QString addressText);

/// @}
/// \name The queues. Any thread, but not from a call-back; take listMutex.
/// @{

/// Queues a copy of var and returns the number of queued writes afterwards, which does not tell whether the write
/// was appended, merged or dropped. A queued write with the same station, area, startAddress and dataLength is
/// overwritten in its place, but never the head: it may be in flight. With QueueLimit writes queued and none to
/// merge with, the write is dropped. `mode` is a QueueMode.
MODBUS_TCPIP_RTU_M_API int AddListWriteVar(RW_VAR *var, int mode);

/// Queues one read of var's area, addressText and dataLength (bits in areas 0 to 3, else registers), split into
/// requests of at most CommSettings::writeBlockSize registers or bytes of bits. Requests that the same hostId and
/// hostItem has queued already, and requests beyond QueueLimit, are left out. Returns the number of queued reads
/// afterwards, or 0 for an address text that gives a negative address; var is then untouched. Otherwise var is
/// rewritten: it holds the last request, its subIndex and aux are 0, and its station is defaultStation while
/// multiStation is 0.
///
/// With QueueAsIs var must be a finished request: a request area, bits from a multiple of 8 on.
MODBUS_TCPIP_RTU_M_API int AddListOnceReadVar(RW_VAR *var, int mode);

/// @}
/// \name Values. Any thread.
/// @{

/// Copies `count` values out of the image, as the last stored replies and host writes left them; no station is
/// asked, and a value that was never read is 0. `area` is an AreaCode, `addressText` as in PLCAddressChangeIntef;
/// `count` is in bits (areas 0 to 3) or registers (4 to 7, two for each 32-bit value). `station` matters only
/// while CommSettings::multiStation is nonzero.
///
/// `out` gets one byte (0 or 1) a bit, two bytes a register low byte first, four bytes a 32-bit value least
/// significant byte first; it grows as needed and keeps its further bytes. Nothing is written beyond the end of a
/// table. A single register of areas 6 and 7 gives the low word, or nothing while values are kept per station.
///
/// Returns 0 for an address text that gives a negative address (out is then untouched), else 1, also for an area
/// that does not exist. Takes imageMutex. While values are kept per station no reply of another link
/// (RW_VAR::linkId) may be stored meanwhile: that takes no lock.
MODBUS_TCPIP_RTU_M_API int GetRegisterData(int ignored, int area, QString addressText, int station,
                                           QByteArray &out, int count);

/// Writes `count` values: bits (areas 0 and 3) or registers (areas 5 and 7). `value` holds one byte a bit, two
/// bytes a register low byte first, four bytes a 32-bit value least significant byte first; what it lacks counts
/// as 0. `station` is used while CommSettings::multiStation is nonzero, else defaultStation is. hostId and
/// hostItem come back in the writeDone call-back.
///
/// While CommSettings::writeMode is WriteModeToStation the write is queued, each bit as an entry of its own,
/// registers in blocks of at most writeBlockSize. It reaches the image when its request is built (a bit of a
/// register: only when the register is read next), or at once while the last exchange has failed. With any other
/// writeMode it goes to the image only. One call queues no more than 65,544 bits or 65,536 registers.
///
/// Returns 0 when the address text gives a negative address and, while writes are queued, when the area cannot be
/// written or nothing was queued; 1 when the value went only to the image; otherwise the number of queued writes,
/// as AddListWriteVar gave it for the last block. The bytes of `value` are copied. Not from a call-back while
/// writes are queued; takes listMutex and imageMutex, one after the other. While values are kept per station no
/// reply of another link (RW_VAR::linkId) may be stored meanwhile: that takes no lock.
MODBUS_TCPIP_RTU_M_API int SetRegisterData(QString tagText, int area, QString addressText, int station,
                                           QByteArray &value, int count, int hostId, int hostItem);

/// @}
/// \name Stations that the cycle passes over. Any thread, also from a call-back; EnCommStation takes stationMutex.
/// @{

/// Switches a station: enable 0 excludes it, 1 includes it again, any other value does nothing. A station below 0
/// includes all stations again, whatever enable says. Queued requests of an excluded station stay queued.
MODBUS_TCPIP_RTU_M_API void EnCommStation(int station, int enable);

/// The same as EnCommStation.
MODBUS_TCPIP_RTU_M_API void EnableEthernet(int station, int enable);

/// True while the station is excluded.
MODBUS_TCPIP_RTU_M_API bool Ethernetcontains(int station);

/// @}
/// \name Status codes, on the communication thread while a request is in flight
/// @{

/// The StatusCode of a ReplyOutcome, shifted by the request in flight; StatusUnknown for any other number.
MODBUS_TCPIP_RTU_M_API int GetDriverReturnValue(int outcome);

/// base + 1 + shift; shift is the hostId of the request in flight when that is 1 to 11, else 0.
MODBUS_TCPIP_RTU_M_API int SwitchErrorReturn(int base);

/// @}
}
