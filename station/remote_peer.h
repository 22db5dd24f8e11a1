// SPDX-License-Identifier: MIT
/// \file
/// Serves the driver's remote frames, which contain an access to a variable instead of a Modbus request.
/// These functions keep no state of their own. Used on the station's thread.
///
/// Requests, all fields high byte first:
///
///     0    frame length mod 256   3    link      7-10   start address     17-20  auxiliary word
///     1    host identifier        4    station   11-12  length            21..   value bytes, writes only
///     2    access, 0 or 1         5-6  area      13-16  sub-index         last   byte sum of all before
///
/// Replies. Their first nine bytes identify the request:
///
///     0    frame length mod 256   5-6  area, as in the request
///     1-4  as in the request      7-8  low half of the start address
///     9..  reads: the data, `length` bytes, first bit lowest.
///          Writes: 9-10 the length as in the request, 11 the byte sum of all before.
///
/// Reads: areas 0 and 1, length in bytes of eight bits. Writes of areas 0 and 3: length in bits; each bit has
/// one value byte, and only a byte of 1 is on. Writes of areas 5 and 7: length in registers; each register
/// has two value bytes, low byte first. Area 7 has pairs of registers: the frame has the low register first,
/// the table the high register.

#pragma once

#include "request_facts.h"
#include "simulated_unit.h"

#include <QtCore/QByteArray>

namespace remote {
/// The size in bytes of the first frame in the stream. 0: more bytes are needed. -1: not a remote frame
/// (unknown access, a read that is not 22 bytes long, a wrong byte sum). The length byte is modulo 256. So
/// the size of a write is computed from area and length. When that does not agree with the length byte, the
/// frame is taken to have fewer than 256 value bytes.
int frameSize(const QByteArray &stream);

/// The fields of a complete frame that faults use.
RequestFacts facts(const QByteArray &frame);

/// Executes the request of a complete frame at a unit and returns the reply. When the unit does not have the
/// addresses or does not serve the area, or the number of value bytes is wrong, it does nothing and returns
/// an empty reply: these frames have no exception.
QByteArray carryOut(SimulatedUnit &unit, const QByteArray &frame);
} // namespace remote
