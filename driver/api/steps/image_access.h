// SPDX-License-Identifier: MIT
/// \file
/// Steps on the image: they copy values between the image arrays and the host's bytes, store replies, and
/// find values per station. The caller holds imageMutex, except where a comment says otherwise.
///
/// `bits` points to the first of 8,193 bytes of eight bits, `regs` to the first of 65,536 registers in native
/// byte order. Host bytes are one byte (0 or 1) for each bit, two bytes for each register (low byte first),
/// four bytes for each 32-bit value (least significant byte first). The first register of a 32-bit value has
/// its high word.
///
/// Bounds: an access is clipped at the end of the array. A 32-bit value is inside only when both registers
/// are. Addresses below 0 are read as 0 and not written. A count above the size of the array is reduced to
/// it.

#pragma once

#include <QtCore/QByteArray>

#include "../export.h"
#include "../records.h"

/// \addtogroup Steps
/// @{

/// \name Readers
/// They write to out[0], out[1], ... and enlarge `out` when it is too small for the values. They never
/// shorten it.
/// @{

/// Reads `count` bits from bit address `start`.
MODBUS_TCPIP_RTU_M_API void GetBitFromUC(QByteArray &out, unsigned char *bits, int start, int count);
/// Reads `count` bits from bit address `start`, register * 16 + bit.
MODBUS_TCPIP_RTU_M_API void GetBitFromUS(QByteArray &out, unsigned short *regs, int start, int count);
/// Reads `count` registers from register `start`.
MODBUS_TCPIP_RTU_M_API void GetWordFromUS(QByteArray &out, unsigned short *regs, int start, int count);
/// Reads 32-bit values. `count` is in registers; an odd last one is left out. A count of exactly 1 gives two
/// bytes: the low word, which is register start + 1.
MODBUS_TCPIP_RTU_M_API void GetWordFromUI(QByteArray &out, unsigned short *regs, int start, int count);

/// @}
/// \name Writers
/// @{

/// Writes `count` bits, as far as `in` has bytes. A byte of exactly 1 sets the bit, any other clears it.
MODBUS_TCPIP_RTU_M_API void SetBitToUC(int start, unsigned char *bits, QByteArray *in, int count);
/// The same for bits of registers.
MODBUS_TCPIP_RTU_M_API void SetBitToUS(int start, unsigned short *regs, QByteArray *in, int count);
/// Writes `count` registers, as far as `in` has both bytes of a register.
MODBUS_TCPIP_RTU_M_API void SetWordToUS(int start, unsigned short *regs, QByteArray *in, int count);
/// Writes 32-bit values, as far as `in` has all four bytes of a value. `count` is in registers. A count below
/// 2 writes nothing; an odd last register is left out.
MODBUS_TCPIP_RTU_M_API void SetWordToUI(int start, unsigned short *regs, QByteArray *in, int count);

/// Writes var's data to the image or, while CommSettings::multiStation is nonzero, to the records of its
/// station. Writes areas 0, 3, 5 and 7; does nothing for any other. startAddress and dataLength are in bits
/// or registers; data as in SetRegisterData. With values per station, all bits of one access to area 3 change
/// the bit number of the start address, and only bytes 0 and 1 change it. Takes imageMutex itself.
MODBUS_TCPIP_RTU_M_API void WriteDataToLocal(RW_VAR *var);

/// @}
/// \name Storing replies
/// For the communication thread. It holds imageMutex, except for replies of another link. It also holds
/// listMutex for the read half of a bit-in-register write. The request in flight says which values the reply
/// has; without a request in flight nothing is stored. Missing reply bytes leave the image arrays unchanged.
/// @{

/// Stores the reply in the image arrays (multiStation 0) or in the per-station records, and completes the
/// write half of a bit-in-register write. A reply never stores more than one whole table.
///
/// Storing per station makes a value empty when the reply lacks its bytes. It then resizes the value that it
/// stored last to the length of the whole data, filled with zeros; readers use only its first one or two
/// bytes. When it stored no value, it resizes the first record of the list instead: a broadcast read, which
/// has no data, makes that value empty.
MODBUS_TCPIP_RTU_M_API void SaveToLocalDataErea(QByteArray *reply);

/// Stores registers. For the read half of a bit-in-register write it also completes the write half.
MODBUS_TCPIP_RTU_M_API void SpecialRegisterSave(QByteArray *reply, unsigned short *regs);

/// Stores whole bytes of eight bits, from byte startAddress / 8 on.
MODBUS_TCPIP_RTU_M_API void SaveBitToUC(QByteArray *reply, unsigned char *bits);

/// Stores registers, from register startAddress on. The reply has the high byte of each first.
MODBUS_TCPIP_RTU_M_API void SaveWordToUS(QByteArray *reply, unsigned short *regs);

/// @}

/// Returns the index in extendList of the first record with this key. When there is none, it appends a record
/// of four zero bytes. Constant time on average. A host may append records to the list or clear it; the next
/// call detects both. When a host changes the key of a record in the list, not every call detects that.
MODBUS_TCPIP_RTU_M_API int ExtendFindSameVar(int station, int area, int address);

/// @}
