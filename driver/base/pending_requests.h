// SPDX-License-Identifier: MIT
/// \file
/// pendingList: the requests that are built and wait for their replies. Its head is in flight. Used on the
/// communication thread. The caller holds listMutex, except for requestInFlight.

#pragma once

#include <QtCore/QByteArray>

#include "../api/steps/driver_object.h"

namespace modbus_driver {

/// Numbers of bytes of a reply: the whole reply, the part before the data, the data.
struct ExpectedReply
{
    int length;
    int headerLength;
    int dataLength;
};

/// The reply to a read with `dataBytes` data bytes. All lengths are 0 for station 0, which never replies.
ExpectedReply readReply(int station, int dataBytes);

/// The echo of a write. All lengths are 0 for station 0.
ExpectedReply writeEcho(int station);

/// Appends one request.
void appendRequest(QByteArray frame, const ExpectedReply &reply, const RW_VAR &var);

/// Sets CommSettings::repliesExpected to `count` and CommSettings::repliesReceived to 0.
void expectReplies(int count);

/// The request in flight, or null when nothing is pending.
inline const Protocol *requestInFlight()
{
    return PLC_driver.pendingList.isEmpty() ? nullptr : &PLC_driver.pendingList.at(0);
}

/// Completes the write half of a bit-in-register write (frames/bit_in_register_write.cpp builds both halves).
/// `value` is the register as it was read. The write at the head of writeList says which bit changes: its
/// first data byte 1 sets the bit, 0 clears it, any other byte or none changes nothing. The result goes into
/// the frame of the write half. Does nothing unless the read half (subIndex -1) is in flight and another
/// request waits behind it.
void completeWriteHalf(quint16 value);

} // namespace modbus_driver
