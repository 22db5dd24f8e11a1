// SPDX-License-Identifier: MIT
/// \file
/// What became of one request on the wire: handed from the connection to the statistics and the values.

#pragma once

#include "link_state.h"
#include "reply_check.h"

#include <QtCore/QByteArray>

/// What the request before left behind, found before the next one is sent.
struct Aftermath
{
    int unit = -1;            ///< of the request before; -1 when there was none
    int lateReplies = 0;      ///< replies that came when nothing was waiting for them
    bool reconnected = false; ///< the link had to be opened again
    qint64 microseconds = 0;  ///< spent on getting the stream back into step
};

struct Exchange
{
    enum End {
        Answered, ///< `reply` may go to the driver; it may be an exception reply
        Sent,     ///< a broadcast: nothing comes back
        NoReply,  ///< sent, and for `cause` nothing came back that counts
        NotSent,  ///< there is no link, for `cause`
    };

    End end = NotSent;
    QByteArray reply;
    LinkCause cause = LinkCause::None;
    ReplyFault fault = ReplyFault::None; ///< with cause HeldBack or BadHeader
    qint64 microseconds = 0;             ///< from sending to the end, 0 when not sent
    Aftermath before;
};

/// How it ended, in words: "exception 2: illegal data address", "no reply".
QString exchangeText(const Exchange &exchange);

/// The name of a Modbus exception, such as "illegal data address".
QString exceptionName(int code);
