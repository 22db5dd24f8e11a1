// SPDX-License-Identifier: MIT
/// \file
/// The decision what to do about a connection after something went wrong on it. All causes are judged here and
/// nowhere else; Connection carries the decision out. Pure.

#pragma once

#include "link_state.h"

enum class Recovery {
    None,  ///< the stream is in step: go on
    Drain, ///< read and throw away until the stream is quiet; drop it all the same if no late reply came
    Drop,  ///< close the connection and open a new one
};

/// What to do before the next request. `drain` is the policy for streams that are still open and readable.
Recovery recoveryAfter(LinkCause cause, bool drain);
