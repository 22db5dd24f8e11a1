// SPDX-License-Identifier: MIT
#include "api/host_calls.h"
#include "base/arithmetic.h"
#include "base/pending_requests.h"

using namespace modbus_driver;

namespace {

/// A hostId from 1 to this number is added to an error code.
const int lastShift = StatusCodesOfClass - 1;

/// The code of each ReplyOutcome. For an error it is the first code of the class.
const StatusCode codeOf[] = {
    StatusDone,           StatusLocalBadKind,  StatusLocalNoReply,  StatusLocalWrongLength,
    StatusRemoteAccepted, StatusRemoteBadKind, StatusRemoteNoReply, StatusRemoteWrongLength,
};

} // namespace

int GetDriverReturnValue(int outcome)
{
    if (outcome < OutcomeDone || outcome > OutcomeRemoteWrongLength)
        return StatusUnknown;
    const StatusCode code = codeOf[outcome];
    const bool isError = code != StatusDone && code != StatusRemoteAccepted;
    return isError ? SwitchErrorReturn(code - 1) : code;
}

int SwitchErrorReturn(int base)
{
    const Protocol *request = requestInFlight();
    const int hostId = request ? request->var.hostId : 0;
    const int shift = hostId >= 1 && hostId <= lastShift ? hostId : 0;
    return wrapped(qint64(base) + 1 + shift);
}
