// SPDX-License-Identifier: MIT
/// \file
/// Modbus TCP frames as a strict station sees them: where one ends in the stream, what it asks for, and the
/// reply to it. Functions of bytes and of one unit; the station's thread calls them.

#pragma once

#include "request_facts.h"
#include "simulated_unit.h"

#include <QtCore/QByteArray>

namespace modbus {
/// Bytes of the first frame in the stream, header included, by its length field. 0: more bytes are needed.
/// -1: no Modbus TCP header (protocol identifier not 0, or a length that no frame has).
int frameSize(const QByteArray &stream);

/// A complete frame in short. For function 23 the address is that of its write.
RequestFacts facts(const QByteArray &frame);

/// Carries out a complete frame at a unit. Returns the reply frame: exception 1 for a function that is not
/// served over TCP (1 to 6, 15, 16, 22 and 23 are), 3 for more or fewer bytes than function and byte count
/// say, and what the unit says otherwise.
QByteArray carryOut(SimulatedUnit &unit, const QByteArray &frame);

/// The request frame of 12 bytes with these fields and transaction 0.
QByteArray request(int unit, int function, int address, int count);

/// The exception reply with this code.
QByteArray exceptionReply(const QByteArray &request, int code);
} // namespace modbus
