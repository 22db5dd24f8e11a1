// SPDX-License-Identifier: MIT
/// \file
/// How an exchange ended, as the host is told in the status of DataCom's result. Error codes come in
/// classes of twelve: the class, plus the hostId of the request in flight when that is 1 to 11.

#pragma once

#include "export.h"

/// What the judging of a reply found.
enum Outcome {
    OutcomeDone = 0,              ///< accepted, and stored if it was a read
    OutcomeLocalBadKind = 1,      ///< the request is neither a read nor a write
    OutcomeLocalNoReply = 2,      ///< no bytes, though some were expected
    OutcomeLocalWrongLength = 3,  ///< not the length that was expected
    OutcomeRemoteAccepted = 4,    ///< accepted without completing the variable
    OutcomeRemoteBadKind = 5,     ///< as OutcomeLocalBadKind
    OutcomeRemoteNoReply = 6,     ///< as OutcomeLocalNoReply
    OutcomeRemoteWrongLength = 7, ///< as OutcomeLocalWrongLength
};

/// Status codes that are not errors, and the one for an outcome that nobody knows.
enum Status {
    StatusRetry = 0,            ///< the exchange failed and will be tried again
    StatusDone = 1,             ///< success
    StatusRemoteAccepted = 100, ///< success of a remote exchange that did not complete the variable
    StatusUnknown = 200,        ///< never produced by the driver itself
};

extern "C" {

/// The status code of an outcome (0 to 7): 1, 100, an error code made by SwitchErrorReturn (11..22,
/// 41..52, 71..82 for local replies, 111..122, 141..152, 171..182 for remote ones), or 200 for any
/// other outcome. For the communication thread, while a request is in flight.
MODBUS_API int GetDriverReturnValue(int outcome);

/// base + 1 + shift; shift is the hostId of the request in flight when that is 1..11, else 0.
MODBUS_API int SwitchErrorReturn(int base);
}
