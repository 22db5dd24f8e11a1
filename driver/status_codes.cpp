// SPDX-License-Identifier: MIT
#include "status_codes.h"

#include "arithmetic.h"
#include "driver_object.h"

namespace {
const int lastShift = 11; // hostIds from 1 up to here shift an error code within its class
} // namespace

int GetDriverReturnValue(int outcome)
{
    switch (outcome) {
    case OutcomeDone:
        return StatusDone;
    case OutcomeLocalBadKind:
        return SwitchErrorReturn(10);
    case OutcomeLocalNoReply:
        return SwitchErrorReturn(40);
    case OutcomeLocalWrongLength:
        return SwitchErrorReturn(70);
    case OutcomeRemoteAccepted:
        return StatusRemoteAccepted;
    case OutcomeRemoteBadKind:
        return SwitchErrorReturn(110);
    case OutcomeRemoteNoReply:
        return SwitchErrorReturn(140);
    case OutcomeRemoteWrongLength:
        return SwitchErrorReturn(170);
    default:
        return StatusUnknown;
    }
}

int SwitchErrorReturn(int base)
{
    const Protocol *request = requestInFlight();
    const int hostId = request ? request->var.hostId : 0;
    const int shift = hostId >= 1 && hostId <= lastShift ? hostId : 0;
    return arithmetic::wrapped(qint64(base) + 1 + shift);
}
