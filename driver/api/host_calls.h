// SPDX-License-Identifier: MIT
/// \file
/// What a host calls: set-up, the communication cycle, the poll list, the queues, the values, the stations.
///
/// Set up first: SetComInfo, RegistCallBackFuncIntf, FlashLocalRegister, ReCreatReadVarList. Then one
/// thread of the host, the communication thread, alternates ComCommunication and DataCom. All other threads
/// of the host may read, write and queue at any time. The driver has three locks: listMutex (queues),
/// imageMutex (values) and stationMutex (switched-off stations). None is recursive. A caller holds none of
/// them.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include "codes.h"
#include "export.h"
#include "records.h"

/// \addtogroup HostCalls
/// @{

extern "C" {

/// \name Set-up
/// Before the communication loop starts. These calls take no lock.
/// @{

/// Hands over the host's settings record and sets its cfgWord13 and cfgWord10 to 0. The record stays the
/// host's. The driver uses it until the next SetComInfo or the end of the process. Call this before any
/// other function. The driver does not check for a missing record, and `settings` must not be null.
MODBUS_TCPIP_RTU_M_API void SetComInfo(CommSettings *settings);

/// Registers both call-backs; a null call-back is skipped. Both run on the communication thread with
/// listMutex held. They must not call AddListWriteVar, AddListOnceReadVar, ReCreatReadVarList,
/// ComCommunication or DataCom, nor SetRegisterData while it queues writes.
///
/// writeDone: an entry of the write queue or of the one-shot reads has left its queue. hostChannel is
/// CommSettings::hostChannel, hostId and hostItem are those of the entry, outcome is a WriteDoneOutcome. A
/// served entry is reported only when nothing else of the same hostId and hostItem is queued. Never
/// reported are: an entry that a later write overwrote, an entry that was dropped because its queue was
/// full, the other entries of a given-up group, and a one-shot read that was judged as one of another link.
///
/// itemNotify: hostId is that of the access; the list is an empty temporary, and what the host adds is
/// discarded; flag is always 1. It is called
/// - when WriteRegister has handled the head of the write queue. That is at every ComCommunication again while
///   no request can be built for that head. It is never called so for remote frames.
/// - when any request was given up.
MODBUS_TCPIP_RTU_M_API void
RegistCallBackFuncIntf(void (*writeDone)(int hostChannel, int hostId, int hostItem, int outcome),
                       void (*itemNotify)(QList<RW_VAR> *list, int hostId, int flag));

/// Keeps the host's three local areas in LB, LW and RWI.
MODBUS_TCPIP_RTU_M_API void FlashLocalRegister(int localBits, int localWords, int thirdArea);

/// Always 1: the driver has no background work to finish. Any thread.
MODBUS_TCPIP_RTU_M_API int QueryFinishFlag();

/// @}
/// \name The communication cycle
/// On the communication thread only.
/// @{

/// The request to send now, or null when there is nothing to send. Writes go first, then one-shot reads,
/// then the poll list. After five writes in a row the write queue waits until a poll request was built or
/// nothing was left to send; the same holds for one-shot reads. While a request is in flight, that request
/// is returned again. The host sends `frameLength` bytes of `frame` and hands the reply, or the lack of
/// one, to DataCom. For a `replyLength` of 0 it waits for nothing and hands over length 0.
///
/// When no request can be built for the head of a queue, the head stays and null is returned. What stands
/// behind it in that queue is never sent.
///
/// The record is the driver's and valid until the next DataCom. Takes listMutex, within it stationMutex and
/// imageMutex, and calls itemNotify within it; takes no lock while a request is in flight.
MODBUS_TCPIP_RTU_M_API Protocol *ComCommunication();

/// Ends the exchange of the request in flight: stores, retires, retries or gives up. `reply` holds the
/// bytes received, from the first byte of the MBAP header on. `length` is their number and must not be
/// larger than the array; 0 means that none came (`reply` may then be null), and is right for a broadcast.
///
/// Returns the driver's result record, always the same one. Its `status` is a StatusCode: 1 or 100 for
/// success, 0 when the request will be sent again, else the error code with which it was given up; 1 when
/// nothing was in flight.
///
/// The other fields are a copy of the queue entry that was retired last, with empty `data`. They do not
/// tell what this exchange was for: after status 0 and after the read half of a bit-in-register write they
/// are those of an earlier access, and after ReCreatReadVarList between ComCommunication and this call they
/// are those of the new list's head. A host that must know copies `var` of the request before this call.
/// The content is valid until the next DataCom.
///
/// Takes imageMutex to store the reply, then listMutex; for the read half of a bit-in-register write,
/// imageMutex within listMutex. Calls both call-backs, with listMutex held.
MODBUS_TCPIP_RTU_M_API RW_VAR *DataCom(QByteArray *reply, int length);

/// @}
/// \name What to poll
/// @{

/// Replaces the whole poll list by the requests that read all items, and returns the number of requests.
/// Items are sorted by address, and neighbours are joined up to CommSettings::writeBlockSize registers, or
/// eight times as many bits. With a writeBlockSize below 1 nothing is cut, and an item joins a neighbour
/// only when it lies inside it. Items with a negative address are left out. An item's count is cut at the
/// size of a whole table; it must be 1 or more. An empty list of items empties the poll list and returns 0.
///
/// While multiStation is 0 all requests go to defaultStation, in the order coils, discrete inputs, input
/// registers, holding registers; areas above 7 are left out. Otherwise requests stand in the order in which
/// each station and area first appeared. Areas above 7 are then kept, although no request can be built for
/// them: do not list any.
///
/// The list stays the host's and is only read. Any thread, but not from a call-back. Takes listMutex to
/// replace the old list, so the cycle never sees half a list.
MODBUS_TCPIP_RTU_M_API int ReCreatReadVarList(QList<VAR_ITEM> *items);

/// Appends a copy of a finished request to the poll list and returns the number of requests. The caller
/// holds listMutex.
MODBUS_TCPIP_RTU_M_API int AddListReadVar(RW_VAR *var);

/// The address that a text means. Areas 2 and 3 take "register.bit" and give register * 16 + bit, or -1
/// when the text has no point. Every other area takes a decimal number. Text that is no number counts as 0.
/// No range is checked: bit 16 is bit 0 of the next register, and a negative number gives a negative
/// address, which every call refuses. No lock, any thread.
MODBUS_TCPIP_RTU_M_API int PLCAddressChangeIntef(int area, QString addressText);

/// @}
/// \name The queues
/// Any thread, but not from a call-back. These calls take listMutex.
/// @{

/// Queues a copy of var and returns the number of queued writes afterwards. That number does not tell
/// whether the write was appended, merged or dropped. A queued write with the same station, area,
/// startAddress and dataLength is overwritten in its place, except the head, which may be in flight. With
/// QueueLimit writes queued and none to merge with, the write is dropped. `mode` is a QueueMode.
MODBUS_TCPIP_RTU_M_API int AddListWriteVar(RW_VAR *var, int mode);

/// Queues one read of var's area, addressText and dataLength (bits in areas 0 to 3, else registers), split
/// into requests of at most CommSettings::writeBlockSize registers, or bytes of bits. Requests that the
/// same hostId and hostItem has queued already, and requests beyond QueueLimit, are left out. Returns the
/// number of queued reads afterwards, or 0 for an address text that gives a negative address; var is then
/// untouched. Otherwise var is rewritten: it holds the last request, its subIndex and aux are 0, and its
/// station is defaultStation while multiStation is 0. Areas other than 0 to 7 are queued as they are,
/// although no request can be built for them: do not queue any.
///
/// With QueueAsIs var must be a finished request: area 0, 1, 4 or 5, and bits from a multiple of 8 on.
MODBUS_TCPIP_RTU_M_API int AddListOnceReadVar(RW_VAR *var, int mode);

/// @}
/// \name Values
/// Any thread.
/// @{

/// Copies `count` values out of the image, as the last stored replies and host writes left them. No station
/// is asked, and a value that was never read is 0. `area` is an AreaCode, `addressText` as in
/// PLCAddressChangeIntef. `count` is in bits (areas 0 to 3) or registers (areas 4 to 7, two for each 32-bit
/// value). `station` matters only while CommSettings::multiStation is nonzero.
///
/// `out` gets one byte (0 or 1) a bit, two bytes a register low byte first, four bytes a 32-bit value least
/// significant byte first. It grows as needed and is never shortened. It may end up shorter than asked:
/// nothing is written beyond the end of a table, for an odd last register of areas 6 and 7, or for an area
/// that does not exist. A single register of areas 6 and 7 gives the low word, or nothing while values are
/// kept per station.
///
/// Returns 0 for an address text that gives a negative address (`out` is then untouched), else 1. Takes
/// imageMutex. While values are kept per station, each address that is asked for gets a record that is kept
/// until the end of the process; and no reply of another link (RW_VAR::linkId) may be stored meanwhile,
/// since that takes no lock.
MODBUS_TCPIP_RTU_M_API int GetRegisterData(int ignored, int area, QString addressText, int station,
                                           QByteArray &out, int count);

/// Writes `count` values: bits (areas 0 and 3) or registers (areas 5 and 7, an even number in area 7).
/// `value` holds one byte a bit, two bytes a register low byte first, four bytes a 32-bit value least
/// significant byte first; bytes that it lacks count as 0. A bit's byte is 0 or 1. `station` is used while
/// CommSettings::multiStation is nonzero, else defaultStation is. hostId and hostItem come back in
/// writeDone.
///
/// While CommSettings::writeMode is WriteModeToStation the write is queued: each bit as an entry of its
/// own, registers in blocks of at most writeBlockSize. The image shows it when its request is built, or at
/// once while the last exchange has failed. A bit of a register shows when its register was read again.
/// With any other writeMode the write goes to the image only. One call queues no more than 65,544 bits or
/// 65,536 registers.
///
/// Returns 0 when the address text gives a negative address. While writes are queued it also returns 0 when
/// the area cannot be written or `count` is below 1, and otherwise the number of queued writes, as
/// AddListWriteVar gave it for the last block. While they go to the image only it returns 1, for any area.
///
/// The bytes of `value` are copied. Not from a call-back while writes are queued. Takes listMutex and
/// imageMutex, one after the other. While values are kept per station, no reply of another link
/// (RW_VAR::linkId) may be stored meanwhile, since that takes no lock.
MODBUS_TCPIP_RTU_M_API int SetRegisterData(QString tagText, int area, QString addressText, int station,
                                           QByteArray &value, int count, int hostId, int hostItem);

/// @}
/// \name Stations that the cycle passes over
/// Any thread, also from a call-back. These calls take stationMutex.
/// @{

/// Switches a station: enable 0 excludes it, 1 includes it again, any other value does nothing. A station
/// below 0 includes all stations again, whatever enable says. Entries of an excluded station stay queued,
/// but move behind those of other stations.
MODBUS_TCPIP_RTU_M_API void EnCommStation(int station, int enable);

/// The same as EnCommStation.
MODBUS_TCPIP_RTU_M_API void EnableEthernet(int station, int enable);

/// True while the station is excluded.
MODBUS_TCPIP_RTU_M_API bool Ethernetcontains(int station);

/// @}
/// \name Status codes
/// On the communication thread while a request is in flight. No lock.
/// @{

/// The StatusCode of a ReplyOutcome, shifted by the request in flight; StatusUnknown for any other number.
MODBUS_TCPIP_RTU_M_API int GetDriverReturnValue(int outcome);

/// base + 1 + shift; shift is the hostId of the request in flight when that is 1 to 11, else 0.
MODBUS_TCPIP_RTU_M_API int SwitchErrorReturn(int base);

/// @}
}

/// @}
