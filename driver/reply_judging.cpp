// SPDX-License-Identifier: MIT
#include "api/steps/reply_judging.h"

#include "api/host_calls.h"
#include "api/steps/image_access.h"
#include "base/brief_lock.h"
#include "base/pending_requests.h"

using namespace modbus_driver;

namespace {

enum ReplyUse { UseInvalid = 0, UseStore = 1, UseDiscard = 2 }; // the results of CheckGetData
enum { AnyLength = -1 };

/// The error outcomes of local or of remote judging.
struct Findings
{
    ReplyOutcome badKind, noReply, wrongLength;
};

const Findings localFindings = {OutcomeLocalBadKind, OutcomeLocalNoReply, OutcomeLocalWrongLength};
const Findings remoteFindings = {OutcomeRemoteBadKind, OutcomeRemoteNoReply, OutcomeRemoteWrongLength};

/// Checks the length first, then the kind of the request. OutcomeDone when the reply is accepted.
ReplyOutcome judge(int length, ReplyUse use, const Findings &findings)
{
    const Protocol *request = requestInFlight();
    if (!request)
        return findings.badKind;
    if (length == 0 && request->replyLength != 0)
        return findings.noReply;
    if (length != request->replyLength && request->replyLength != AnyLength)
        return findings.wrongLength;
    return use == UseInvalid ? findings.badKind : OutcomeDone;
}

ReplyOutcome judgeLocal(QByteArray *reply, int length)
{
    const ReplyUse use = static_cast<ReplyUse>(CheckGetData(reply, length));
    const ReplyOutcome outcome = judge(length, use, localFindings);
    if (outcome == OutcomeDone && use == UseStore) {
        BriefLock lock(&PLC_driver.imageMutex);
        SaveToLocalDataErea(reply);
    }
    return outcome;
}

ReplyOutcome judgeRemote(QByteArray *reply, int length)
{
    const ReplyUse use = static_cast<ReplyUse>(CheckGetData(reply, length));
    const ReplyOutcome outcome = judge(length, use, remoteFindings);
    if (outcome != OutcomeDone)
        return outcome;
    if (requestInFlight()->var.subIndex != SubIndexReadHalf)
        return OutcomeRemoteAccepted;
    SaveToLocalDataErea(reply);
    return PLC_driver.comInfo->repliesReceived == 1 ? OutcomeRemoteAccepted : OutcomeDone;
}

} // namespace

int DealDataOfLocalArea(QByteArray *reply, int length)
{
    return GetDriverReturnValue(judgeLocal(reply, length));
}

int DealDataOfRemoteArea(QByteArray *reply, int length)
{
    return GetDriverReturnValue(judgeRemote(reply, length));
}

int CheckGetData(QByteArray *, int)
{
    const Protocol *request = requestInFlight();
    if (!request)
        return UseInvalid;
    switch (request->var.rwFlag) {
    case AccessRead:
        return UseStore;
    case AccessWrite:
        return UseDiscard;
    default:
        return UseInvalid;
    }
}
