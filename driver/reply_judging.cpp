// SPDX-License-Identifier: MIT
#include "reply_judging.h"

#include "driver_object.h"
#include "status_codes.h"

#include "../image/reply_storage.h"

#include <QtCore/QMutexLocker>

namespace {

enum ReplyUse { UseNone = 0, UseStore = 1, UseNothing = 2 };
enum { AnyLength = -1 };

/// What the two kinds of judging call the same findings.
struct Findings
{
    Outcome badKind, noReply, wrongLength;
};

const Findings localFindings = {OutcomeLocalBadKind, OutcomeLocalNoReply, OutcomeLocalWrongLength};
const Findings remoteFindings = {OutcomeRemoteBadKind, OutcomeRemoteNoReply, OutcomeRemoteWrongLength};

/// Length first, then the kind of the request. OutcomeDone when the reply may be used.
Outcome judge(int length, ReplyUse use, const Findings &findings)
{
    const Protocol *request = requestInFlight();
    if (!request)
        return findings.badKind;
    if (length == 0 && request->replyLength != 0)
        return findings.noReply;
    if (length != request->replyLength && request->replyLength != AnyLength)
        return findings.wrongLength;
    return use == UseNone ? findings.badKind : OutcomeDone;
}

Outcome judgeLocal(QByteArray *reply, int length)
{
    const ReplyUse use = static_cast<ReplyUse>(CheckGetData(reply, length));
    const Outcome outcome = judge(length, use, localFindings);
    if (outcome == OutcomeDone && use == UseStore) {
        QMutexLocker lock(&PLC_driver.imageMutex);
        SaveToLocalDataErea(reply);
    }
    return outcome;
}

Outcome judgeRemote(QByteArray *reply, int length)
{
    const ReplyUse use = static_cast<ReplyUse>(CheckGetData(reply, length));
    const Outcome outcome = judge(length, use, remoteFindings);
    if (outcome != OutcomeDone)
        return outcome;
    if (requestInFlight()->var.subIndex != -1)
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
        return UseNone;
    switch (request->var.rwFlag) {
    case 0:
        return UseStore;
    case 1:
        return UseNothing;
    default:
        return UseNone;
    }
}
