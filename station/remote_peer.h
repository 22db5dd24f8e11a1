// SPDX-License-Identifier: MIT
/// \file
/// The station's side of the driver's remote frames, which carry a variable access instead of a Modbus
/// request. Functions of bytes and of one unit; the station's thread calls them.
///
/// Requests, all fields high byte first:
///
///     0    frame length mod 256   3    link      7-10   start address     17-20  auxiliary word
///     1    host identifier        4    station   11-12  length            21..   value bytes, writes only
///     2    access, 0 or 1         5-6  area      13-16  sub-index         last   byte sum of all before
///
/// Replies, whose first nine bytes tell which request they answer:
///
///     0    frame length mod 256   5-6  area, as in the request
///     1-4  as in the request      7-8  low half of the start address
///     9..  reads: the data, `length` bytes, first bit lowest.
///          Writes: 9-10 the length as in the request, 11 the byte sum of all before.
///
/// Reads serve areas 0 and 1 (length in bytes of eight bits), writes areas 0 and 3 (length in bits, one value
/// byte each, exactly 1 is on) and 5 and 7 (length in registers, low byte first; area 7 in pairs, low
/// register first, that are stored high register first).

#pragma once

#include "request_facts.h"
#include "simulated_unit.h"

#include <QtCore/QByteArray>

namespace remote {
/// Bytes of the first frame in the stream. 0: more bytes are needed. -1: no such frame (unknown access,
/// a read that is not 22 bytes long, a wrong byte sum). The length byte wraps at 256, so the size of a write
/// follows from area and length where these agree with it; otherwise the value bytes are taken to be fewer
/// than 256.
int frameSize(const QByteArray &stream);

/// A complete frame in short.
RequestFacts facts(const QByteArray &frame);

/// Carries out a complete frame at a unit. Returns the reply; empty, and nothing done, for what the unit does
/// not have or serve (these frames know no exception), also when the value bytes do not fit area and length.
QByteArray carryOut(SimulatedUnit &unit, const QByteArray &frame);
} // namespace remote
