// SPDX-License-Identifier: MIT
/// \file
/// The outcome of one request on the wire: handed from the connection to the loop and its observer. Plain data.

#pragma once

#include "link_state.h"
#include "reply_check.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>

/// Late replies and recovery time since the previous exchange.
struct Aftermath
{
    int unit = -1;            ///< of the previous request; -1 when there was none
    QList<int> lateUnits;     ///< one unit for each reply that was thrown away: late, or unasked
    bool reconnected = false; ///< the link had to be opened again
    qint64 microseconds = 0;  ///< spent on resynchronising the stream
};

struct Exchange
{
    enum End {
        Answered, ///< `reply` may go to the driver; it may be an exception reply
        Sent,     ///< a broadcast: no reply is expected
        NoReply,  ///< sent, but for `cause` there is no usable reply
        NotSent,  ///< there is no link, for `cause`
    };

    End end = NotSent;
    QByteArray reply;
    LinkCause cause = LinkCause::None;
    ReplyFault fault = ReplyFault::None; ///< with cause HeldBack or BadHeader
    QByteArray heldBack;                 ///< with cause HeldBack: the reply
    qint64 microseconds = 0;             ///< from sending to the end, 0 when not sent
    Aftermath before;
};
