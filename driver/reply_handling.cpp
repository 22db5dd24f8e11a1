// SPDX-License-Identifier: MIT
#include "reply_handling.h"

#include "arithmetic.h"
#include "call_backs.h"
#include "driver_object.h"
#include "reply_judging.h"
#include "status_codes.h"

#include <QtCore/QMutexLocker>

namespace {

bool isSuccess(int status)
{
    return status == StatusDone || status == StatusRemoteAccepted;
}

bool sameItem(const RW_VAR &a, const RW_VAR &b)
{
    return a.hostId == b.hostId && a.hostItem == b.hostItem;
}

bool itemIsQueuedAgain(const QList<RW_VAR> &queue)
{
    for (int i = 1; i < queue.size(); ++i) {
        if (sameItem(queue.at(i), queue.at(0)))
            return true;
    }
    return false;
}

/// The queue that the request in flight came from, or null when it came from none.
QList<RW_VAR> *originQueue()
{
    switch (PLC_driver.currentKind) {
    case OriginWrite:
        return &PLC_driver.writeList;
    case OriginOnceRead:
        return &PLC_driver.onceReadList;
    case OriginPoll:
        return &PLC_driver.readList;
    default:
        return nullptr;
    }
}

void reportEntry(const QList<RW_VAR> &queue, bool remote)
{
    if (PLC_driver.currentKind == OriginOnceRead && remote)
        return;
    if (PLC_driver.lastFailed)
        callBacks::writeDone(queue.at(0), callBacks::GivenUp);
    else if (!itemIsQueuedAgain(queue))
        callBacks::writeDone(queue.at(0), callBacks::Served);
}

/// Takes the served entry off its queue, or, for a poll, to the queue's end, and tells the host.
void retireEntry(bool remote)
{
    QList<RW_VAR> *queue = originQueue();
    if (!queue || queue->isEmpty())
        return;
    if (PLC_driver.currentKind == OriginPoll) {
        passRetValue(queue->at(0), PLC_driver.result);
        queue->move(0, queue->size() - 1);
        return;
    }
    reportEntry(*queue, remote);
    passRetValue(queue->at(0), PLC_driver.result);
    queue->removeFirst();
}

/// A group is what one item has queued, of one station while values are kept per station.
bool isInGroupOfResult(const RW_VAR &entry)
{
    const bool everyStation = PLC_driver.comInfo->multiStation == 0;
    return sameItem(entry, PLC_driver.result) && (everyStation || entry.station == PLC_driver.result.station);
}

/// What else the same item has queued falls with the request that was given up.
void dropGroupOfResult()
{
    QList<RW_VAR> *queue = originQueue();
    if (!queue || PLC_driver.currentKind == OriginPoll)
        return;
    QList<RW_VAR> kept;
    for (int i = 0; i < queue->size(); ++i) {
        if (!isInGroupOfResult(queue->at(i)))
            kept.append(queue->at(i));
    }
    *queue = kept;
}

/// Counts a good local reply; a pass is complete after one reply more than the poll list has entries.
void countTowardsPass()
{
    PLC_driver.cyclicDone = arithmetic::wrapped(qint64(PLC_driver.cyclicDone) + 1);
    if (PLC_driver.cyclicDone <= PLC_driver.readList.size())
        return;
    PLC_driver.cyclicDone = 0;
    PLC_driver.comInfo->cycleDone = 1;
}

/// True when the request has had all the replies that it needs.
bool takeReply(bool remote)
{
    CommSettings &settings = *PLC_driver.comInfo;
    PLC_driver.lastFailed = false;
    PLC_driver.pendingList.removeFirst();
    settings.repliesReceived = arithmetic::wrapped(qint64(settings.repliesReceived) + 1);
    if (settings.repliesReceived < settings.repliesExpected)
        return false;
    if (settings.cycleDone == 0 && !remote)
        countTowardsPass();
    return true;
}

/// True when no retry is left and the request, with its second half, is given up.
bool noteFailure()
{
    CommSettings &settings = *PLC_driver.comInfo;
    PLC_driver.cyclicDone = 0;
    settings.failCount = arithmetic::wrapped(qint64(settings.failCount) + 1);
    PLC_driver.lastFailed = true;
    settings.cycleDone = 0;
    if (settings.failCount <= settings.retryLimit)
        return false;
    settings.failCount = 0;
    PLC_driver.pendingList.clear();
    return true;
}

/// What the exchange came to; calls back and changes queues as it must.
int endExchange(int judged, bool remote)
{
    if (isSuccess(judged)) {
        if (takeReply(remote))
            retireEntry(remote);
        return judged;
    }
    if (!noteFailure())
        return StatusRetry;
    retireEntry(remote);
    callBacks::itemNotify(PLC_driver.result.hostId);
    dropGroupOfResult();
    return judged;
}

} // namespace

RW_VAR *DataCom(QByteArray *reply, int length)
{
    PLC_driver.result.status = StatusDone;
    const Protocol *request = requestInFlight();
    if (!request)
        return &PLC_driver.result;

    if (!reply) {
        QByteArray noBytes;
        return DataCom(&noBytes, length);
    }
    // Held while judging and storing, too: a write-back takes its bit from the queue's head.
    QMutexLocker lock(&PLC_driver.listMutex);
    const bool remote = request->var.linkId != PLC_driver.comInfo->linkId;
    const int judged = remote ? DealDataOfRemoteArea(reply, length) : DealDataOfLocalArea(reply, length);
    PLC_driver.result.status = endExchange(judged, remote);
    return &PLC_driver.result;
}
