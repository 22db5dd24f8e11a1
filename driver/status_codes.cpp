// SPDX-License-Identifier: MIT
#include "api/host_calls.h"
#include "base/arithmetic.h"
#include "base/pending_requests.h"

using namespace modbus_driver;

namespace {

const int lastShift =
    StatusCodesOfClass - 1; // hostIds from 1 up to here shift an error code within its class

int errorOf(StatusCode firstOfClass)
{
    return SwitchErrorReturn(firstOfClass - 1);
}

} // namespace

int GetDriverReturnValue(int outcome)
{
    switch (outcome) {
    case OutcomeDone:
        return StatusDone;
    case OutcomeLocalBadKind:
        return errorOf(StatusLocalBadKind);
    case OutcomeLocalNoReply:
        return errorOf(StatusLocalNoReply);
    case OutcomeLocalWrongLength:
        return errorOf(StatusLocalWrongLength);
    case OutcomeRemoteAccepted:
        return StatusRemoteAccepted;
    case OutcomeRemoteBadKind:
        return errorOf(StatusRemoteBadKind);
    case OutcomeRemoteNoReply:
        return errorOf(StatusRemoteNoReply);
    case OutcomeRemoteWrongLength:
        return errorOf(StatusRemoteWrongLength);
    default:
        return StatusUnknown;
    }
}

int SwitchErrorReturn(int base)
{
    const Protocol *request = requestInFlight();
    const int hostId = request ? request->var.hostId : 0;
    const int shift = hostId >= 1 && hostId <= lastShift ? hostId : 0;
    return wrapped(qint64(base) + 1 + shift);
}
