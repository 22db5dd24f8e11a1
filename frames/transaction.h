// SPDX-License-Identifier: MIT
/// \file
/// Queues a built frame as the next transaction, with what its reply will look like. For request
/// builders: on the communication thread, listMutex held.

#pragma once

#include <QtCore/QByteArray>

#include "../driver/records.h"

namespace transaction {

/// Bytes of a reply: all of it, the part before the data, the data.
struct Reply
{
    int length;
    int headerLength;
    int dataLength;
};

/// A read's reply with that many data bytes; none at all for station 0.
Reply readReply(int station, int dataBytes);

/// A write's echo; none at all for station 0.
Reply writeEcho(int station);

/// Appends one transaction to pendingList.
void append(QByteArray frame, const Reply &reply, const RW_VAR &var);

/// Tells the settings record how many replies the request needs, with none received so far.
void expectReplies(int count);

} // namespace transaction
