// SPDX-License-Identifier: MIT
/// \file
/// What a host calls: set-up, the communication cycle, the poll list, the queues, the values, the stations.
///
/// The host first calls SetComInfo, RegistCallBackFuncIntf, FlashLocalRegister and ReCreatReadVarList. Then
/// one thread of the host, the communication thread, calls ComCommunication and DataCom in turn. All other
/// threads of the host may read, write and queue at any time. The driver has three locks: listMutex (queues),
/// imageMutex (values) and stationMutex (disabled stations). None is recursive. The caller must hold none of
/// them, except where a function says otherwise.

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
/// Called before the communication loop starts. These calls take no lock.
/// @{

/// Gives the driver the host's settings record and sets its cfgWord13 and cfgWord10 to 0. The host keeps the
/// ownership. The driver uses the record until the next SetComInfo or the end of the process. Call this
/// before any other function: the driver does not check whether there is a record. `settings` must not be
/// null.
MODBUS_TCPIP_RTU_M_API void SetComInfo(CommSettings *settings);

/// Registers both call-backs; a null call-back is skipped. Both run on the communication thread with
/// listMutex held. They must not call AddListWriteVar, AddListOnceReadVar, ReCreatReadVarList,
/// ComCommunication or DataCom, nor SetRegisterData while it queues writes.
///
/// writeDone: an entry of the write queue or of the one-shot reads has left its queue. hostChannel is
/// CommSettings::hostChannel, hostId and hostItem are those of the entry, outcome is a WriteDoneOutcome. A
/// served entry is reported only when nothing else of the same hostId and hostItem is queued in that queue.
/// These entries are never reported: an entry that a later write overwrote, an entry that was dropped because
/// its queue was full, the other entries of a group that was given up, and a one-shot read of another link.
///
/// itemNotify: hostId is that of the access. The list is an empty temporary; the driver discards everything
/// that the host adds to it. flag is always 1. It is called
/// - when WriteRegister has handled the head of the write queue. While no request can be built for that head,
///   every ComCommunication that serves writes calls it again. Writes in remote frames do not call it.
/// - when any request was given up.
MODBUS_TCPIP_RTU_M_API void
RegistCallBackFuncIntf(void (*writeDone)(int hostChannel, int hostId, int hostItem, int outcome),
                       void (*itemNotify)(QList<RW_VAR> *list, int hostId, int flag));

/// Keeps the host's three local areas in LB, LW and RWI.
MODBUS_TCPIP_RTU_M_API void FlashLocalRegister(int localBits, int localWords, int thirdArea);

/// Returns 1 always, because the driver has no background work. Any thread.
MODBUS_TCPIP_RTU_M_API int QueryFinishFlag();

/// @}
/// \name The communication cycle
/// Called on the communication thread only.
/// @{

/// Returns the request to send now, or null when there is nothing to send. Writes go first, then one-shot
/// reads, then the poll list. After five writes in a row the write queue waits until a poll request was built
/// or nothing was left to send. The same is true for one-shot reads. While a request is in flight, the same
/// request is returned again. The host sends `frameLength` bytes of `frame`. Then it calls DataCom with the
/// reply, or with length 0 when none came. When `replyLength` is 0, it calls DataCom with length 0 at once.
///
/// When no request can be built for the head of a queue, the head stays and null is returned. The entries
/// behind it in that queue are never sent.
///
/// The driver owns the returned record, which is valid until the next DataCom. Takes listMutex, and within it
/// stationMutex and imageMutex. Calls itemNotify with listMutex held. Takes no lock while a request is in
/// flight.
MODBUS_TCPIP_RTU_M_API Protocol *ComCommunication();

/// Ends the exchange of the request in flight: stores the reply, then retires, retries or gives up the
/// request. `reply` holds the bytes received, from the first byte of the MBAP header on. `length` is their
/// number and must not be larger than the array. A length of 0 means that no reply came; `reply` may then be
/// null. It is also the correct length after a broadcast.
///
/// Returns the driver's result record, always the same one. Its `status` is a StatusCode: 1 or 100 for
/// success, 0 when the request will be sent again, else the error code of the request that was given up. It
/// is 1 when no request was in flight.
///
/// The other fields are a copy of the queue entry that was retired last, with empty `data`. That is not
/// always the access of this exchange: after status 0 and after the read half of a bit-in-register write it
/// is an earlier access. When ReCreatReadVarList was called between ComCommunication and this call, it is the
/// head of the new list. A host that needs the access copies `var` of the request before this call. The
/// content is valid until the next DataCom.
///
/// Takes imageMutex to store the reply, then listMutex. For the read half of a bit-in-register write it takes
/// imageMutex within listMutex. Calls both call-backs with listMutex held.
MODBUS_TCPIP_RTU_M_API RW_VAR *DataCom(QByteArray *reply, int length);

/// @}
/// \name The poll list
/// @{

/// Replaces the whole poll list by the requests that read all items, and returns the number of requests.
/// Items are sorted by address, and neighbours are joined up to CommSettings::writeBlockSize registers, or
/// eight times as many bits. With a writeBlockSize below 1 no item is split, and an item joins a neighbour
/// only when the neighbour contains it. Items with a negative address are left out. An item's count must be 1
/// or more; it is reduced to the size of a whole table. An empty list of items empties the poll list and
/// returns 0.
///
/// While multiStation is 0, all requests go to defaultStation, in the order coils, discrete inputs, input
/// registers, holding registers; areas above 7 are left out. While multiStation is nonzero, requests are in
/// the order in which each station and area first appeared. Areas above 7 are then kept although no request
/// can be built for them, so the list must not have any.
///
/// The host owns the list; the driver only reads it. Any thread, but not from a call-back. Takes listMutex to
/// replace the old list, so the cycle never sees half a list.
MODBUS_TCPIP_RTU_M_API int ReCreatReadVarList(QList<VAR_ITEM> *items);

/// Appends a copy of a finished request to the poll list and returns the number of requests. The caller
/// holds listMutex.
MODBUS_TCPIP_RTU_M_API int AddListReadVar(RW_VAR *var);

/// Converts an address text to an address. Areas 2 and 3 take "register.bit" and give register * 16 + bit, or
/// -1 when the text has no point. Every other area takes a decimal number. Text that is not a number counts
/// as
/// 0. The range is not checked: bit 16 is bit 0 of the next register. A negative number gives a negative
/// address, which every call refuses. No lock, any thread.
MODBUS_TCPIP_RTU_M_API int PLCAddressChangeIntef(int area, QString addressText);

/// @}
/// \name The queues
/// Any thread, but not from a call-back. These calls take listMutex.
/// @{

/// Queues a copy of var and returns the number of queued writes afterwards. That number does not tell whether
/// the write was appended, merged or dropped. A queued write with the same station, area, startAddress and
/// dataLength is overwritten in its place, except the head, which may be in flight. When the queue has
/// QueueLimit writes and none of them can be overwritten, the write is dropped. `mode` is a QueueMode.
MODBUS_TCPIP_RTU_M_API int AddListWriteVar(RW_VAR *var, int mode);

/// Queues one read of var's area, addressText and dataLength (bits in areas 0 to 3, else registers). The read
/// is split into requests of at most CommSettings::writeBlockSize registers, or bytes of eight bits. A
/// request is left out when the same hostId and hostItem has already queued it, or when QueueLimit is
/// reached. Returns the number of queued reads afterwards. An address text that gives a negative address
/// returns 0 and does not change var. Otherwise var is changed: it holds the last request, its subIndex and
/// aux are 0, and its station is defaultStation while multiStation is 0. Areas other than 0 to 7 are queued
/// unchanged although no request can be built for them, so the host must not queue any.
///
/// With QueueAsIs var must be a finished request: area 0, 1, 4 or 5; the startAddress of bits is a multiple
/// of 8.
MODBUS_TCPIP_RTU_M_API int AddListOnceReadVar(RW_VAR *var, int mode);

/// @}
/// \name Values
/// Any thread.
/// @{

/// Copies `count` values from the image, as the last stored replies and host writes left them. It sends no
/// request. A value that was never read is 0. `area` is an AreaCode, `addressText` as in
/// PLCAddressChangeIntef. `count` is in bits (areas 0 to 3) or registers (areas 4 to 7, two for each 32-bit
/// value). `station` is used only while CommSettings::multiStation is nonzero.
///
/// `out` gets one byte (0 or 1) for each bit, two bytes for each register (low byte first), four bytes for
/// each 32-bit value (least significant byte first). It grows as needed and is never shortened. It may be
/// shorter than `count` needs: nothing is written for an odd last register of areas 6 and 7, for an area that
/// does not exist and, in the shared image, for addresses beyond the end of a table. A single register of
/// areas 6 and 7 gives the low word, or nothing while values are kept per station.
///
/// Returns 0 for an address text that gives a negative address (`out` is then unchanged), else 1. Takes
/// imageMutex. While values are kept per station, each address that is read gets a record, which is kept
/// until the end of the process. During this call no reply of another link (RW_VAR::linkId) may be stored,
/// because storing it takes no lock.
MODBUS_TCPIP_RTU_M_API int GetRegisterData(int ignored, int area, QString addressText, int station,
                                           QByteArray &out, int count);

/// Writes `count` values: bits (areas 0 and 3) or registers (areas 5 and 7, an even number in area 7).
/// `value` holds one byte (0 or 1) for each bit, two bytes for each register (low byte first), four bytes for
/// each 32-bit value (least significant byte first). `station` is used while CommSettings::multiStation is
/// nonzero, else defaultStation. writeDone reports hostId and hostItem.
///
/// While CommSettings::writeMode is WriteModeToStation, the write is queued: each bit as an entry of its own,
/// registers in blocks of at most writeBlockSize. Bytes that `value` lacks count as 0. One call makes entries
/// for at most 65,544 bits or 65,536 registers. The image gets the new value when the request is built, or at
/// once while the last exchange has failed. Building the request does not change a bit of a register in the
/// image; reading its register again does. With any other writeMode the write changes the image only, as far
/// as `value` has bytes.
///
/// Returns 0 when the address text gives a negative address. While writes are queued, it also returns 0 when
/// the area cannot be written or `count` is below 1; otherwise it returns the number of queued writes, as
/// AddListWriteVar gave it for the last entry. While writes change the image only, it returns 1 for any area.
///
/// The bytes of `value` are copied. Not from a call-back while writes are queued. Takes listMutex and
/// imageMutex, one after the other. While values are kept per station, no reply of another link
/// (RW_VAR::linkId) may be stored during this call, because storing it takes no lock.
MODBUS_TCPIP_RTU_M_API int SetRegisterData(QString tagText, int area, QString addressText, int station,
                                           QByteArray &value, int count, int hostId, int hostItem);

/// @}
/// \name Disabled stations
/// The cycle builds no request for a disabled station. Any thread, also from a call-back. These calls take
/// stationMutex.
/// @{

/// Disables a station (enable 0) or enables it again (enable 1). Any other value does nothing. A station
/// below 0 enables all stations, for any value of enable. Entries of a disabled station stay queued, but move
/// behind those of other stations.
MODBUS_TCPIP_RTU_M_API void EnCommStation(int station, int enable);

/// The same as EnCommStation.
MODBUS_TCPIP_RTU_M_API void EnableEthernet(int station, int enable);

/// True while the station is disabled.
MODBUS_TCPIP_RTU_M_API bool Ethernetcontains(int station);

/// @}
/// \name Status codes
/// Called on the communication thread while a request is in flight. No lock.
/// @{

/// The StatusCode of a ReplyOutcome. The hostId of the request in flight is added to an error code when it is
/// 1 to 11. StatusUnknown for a number that is not a ReplyOutcome.
MODBUS_TCPIP_RTU_M_API int GetDriverReturnValue(int outcome);

/// Returns base + 1 + shift. shift is the hostId of the request in flight when that is 1 to 11, else 0.
MODBUS_TCPIP_RTU_M_API int SwitchErrorReturn(int base);

/// @}
}

/// @}
