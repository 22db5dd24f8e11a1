// SPDX-License-Identifier: MIT
/// \file
/// Modbus TCP frames for a strict station: finds the end of a frame in the stream, reads its fields, and
/// makes the reply. These functions keep no state of their own. Used on the station's thread.

#pragma once

#include "request_facts.h"
#include "simulated_unit.h"

#include <QtCore/QByteArray>

namespace modbus {
/// The size in bytes of the first frame in the stream, header included, from its length field. 0: more bytes
/// are needed. -1: not a Modbus TCP header (the protocol identifier is not 0, or the length is not possible).
int frameSize(const QByteArray &stream);

/// The fields of a complete frame that faults use. For function 23 the address is that of its write.
RequestFacts facts(const QByteArray &frame);

/// Executes the request of a complete frame at a unit and returns the reply frame. It is exception 1 for a
/// function other than 1 to 6, 15, 16, 22 and 23, and exception 3 for a frame that is longer or shorter than
/// function and byte count require. Otherwise it is the reply of the unit.
QByteArray carryOut(SimulatedUnit &unit, const QByteArray &frame);

/// The request frame of 12 bytes with these fields and transaction 0.
QByteArray request(int unit, int function, int address, int count);

/// The exception reply with this code.
QByteArray exceptionReply(const QByteArray &request, int code);
} // namespace modbus
