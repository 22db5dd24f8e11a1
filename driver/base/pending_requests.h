// SPDX-License-Identifier: MIT
/// \file
/// The requests that are built and wait for their replies: pendingList, whose head is in flight. On the
/// communication thread, listMutex held.

#pragma once

#include <QtCore/QByteArray>

#include "../api/steps/driver_object.h"

namespace modbus_driver {

/// Bytes of a reply: all of it, the part before the data, the data.
struct ExpectedReply
{
    int length;
    int headerLength;
    int dataLength;
};

/// A read's reply with that many data bytes; none at all for station 0.
ExpectedReply readReply(int station, int dataBytes);

/// A write's echo; none at all for station 0.
ExpectedReply writeEcho(int station);

/// Appends one request.
void appendRequest(QByteArray frame, const ExpectedReply &reply, const RW_VAR &var);

/// Tells the settings record how many replies the request needs, with none received so far.
void expectReplies(int count);

/// The request in flight, or null when nothing is pending.
inline const Protocol *requestInFlight()
{
    return PLC_driver.pendingList.isEmpty() ? nullptr : &PLC_driver.pendingList.at(0);
}

/// The second half of a bit-in-register write (frames/bit_in_register_write.cpp builds both halves). While
/// the read half is in flight (subIndex -1) and the write half waits behind it, puts the register's `value`
/// into the frame of the write half, with the bit of the write at the head of writeList set (first data byte
/// 1), cleared (0) or left (any other). Does nothing otherwise.
void completeWriteHalf(quint16 value);

} // namespace modbus_driver
