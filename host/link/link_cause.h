// SPDX-License-Identifier: MIT
/// \file
/// Why a link was lost, or why an exchange went wrong: what the socket, the connection and their users tell each other.
/// Plain value.

#pragma once

#include <QtCore/QString>

/// Used like the enumeration in it.
struct LinkCause
{
    enum Kind {
        None,
        Refused,    ///< the peer refuses connections
        NoRoute,    ///< the network knows no way to the peer
        NoAnswer,   ///< no connection within the time-out of `detail` ms
        NotOpened,  ///< no connection for another reason: the system's error number `detail`
        NoSuchName, ///< the name has no address
        NoLookup,   ///< whether the name has an address could not be found out
        Closed,     ///< ended by the peer, in good order or by a reset
        Silent,     ///< no reply within the time-out
        CutOff,     ///< a reply began and did not end within the time-out
        BadHeader,  ///< the stream is no longer Modbus
        HeldBack,   ///< a reply that cannot answer the request
        Unasked,    ///< a reply without a request: late, or sent twice
        Congested,  ///< it does not take the bytes of a request within the time-out
        Flood,      ///< more unasked bytes than any late reply explains
        Stopped,    ///< this host ended while it waited
    };

    LinkCause(Kind cause = None, int number = 0) : kind(cause), detail(number) {}
    operator Kind() const { return kind; }

    Kind kind;
    int detail;
};

/// In words, such as "connection refused".
QString linkCauseText(const LinkCause &cause);
