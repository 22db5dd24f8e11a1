// SPDX-License-Identifier: MIT
/// \file
/// The decision what to do about a connection after something went wrong on it. All causes are judged here and
/// nowhere else; Connection carries the decision out. Pure.

#pragma once

#include "link_state.h"

enum class AfterTimeout {
    Numbers, ///< keep the connection while numbers tell late replies; as Reconnect when the station echoes none
    Reconnect, ///< drop the connection
    Drain,     ///< read and throw away until the stream is quiet; for gateways that cannot bear reconnecting
};

enum class Recovery {
    None,  ///< go on: the stream is in step, or the next reply is known by its number
    Drain, ///< read and throw away until the stream is quiet; drop it all the same if no late reply came
    Drop,  ///< close the connection and open a new one
};

struct StreamFacts
{
    AfterTimeout policy = AfterTimeout::Numbers;
    bool numbersAreEchoed = false;
    int silentInRow = 0; ///< requests in a row after which not a single byte came
};

/// After so many the peer itself is taken for dead, not just one of its units.
enum { SilentRequestsOfDeadPeer = 10 };

/// What to do before the next request.
Recovery recoveryAfter(LinkCause cause, const StreamFacts &facts);
