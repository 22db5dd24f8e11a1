// SPDX-License-Identifier: MIT
#include "api/host_calls.h"
#include "api/steps/reply_judging.h"
#include "base/arithmetic.h"
#include "base/brief_lock.h"
#include "base/call_backs.h"
#include "base/pending_requests.h"

using namespace modbus_driver;

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
        callWriteDone(queue.at(0), WriteDoneGivenUp);
    else if (!itemIsQueuedAgain(queue))
        callWriteDone(queue.at(0), WriteDoneServed);
}

/// Ends the queue entry of the request in flight, after success or after giving up. A poll entry moves to the
/// end of the poll list. Any other entry is reported to the host and removed from its queue.
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

/// A group is all queued entries with the same hostId and hostItem. While values are kept per station, they
/// must be of the same station too.
bool isInGroupOfResult(const RW_VAR &entry)
{
    const bool everyStation = PLC_driver.comInfo->multiStation == 0;
    return sameItem(entry, PLC_driver.result) && (everyStation || entry.station == PLC_driver.result.station);
}

/// Drops the other queued entries of the group of the request that was given up.
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

/// Counts a good local reply. The pass is complete when there was one reply more than the poll list has
/// entries.
void countTowardsPass()
{
    PLC_driver.cyclicDone = wrapped(qint64(PLC_driver.cyclicDone) + 1);
    if (PLC_driver.cyclicDone <= PLC_driver.readList.size())
        return;
    PLC_driver.cyclicDone = 0;
    PLC_driver.comInfo->cycleDone = 1;
}

/// Counts a good reply and removes its request. True when all replies that the access needs are here.
bool countReply(bool remote)
{
    CommSettings &settings = *PLC_driver.comInfo;
    PLC_driver.lastFailed = false;
    PLC_driver.pendingList.removeFirst();
    settings.repliesReceived = wrapped(qint64(settings.repliesReceived) + 1);
    if (settings.repliesReceived < settings.repliesExpected)
        return false;
    if (settings.cycleDone == 0 && !remote)
        countTowardsPass();
    return true;
}

/// Counts a failure. When no retry is left, it drops the request (both halves of a bit-in-register write) and
/// returns true.
bool countFailure()
{
    CommSettings &settings = *PLC_driver.comInfo;
    PLC_driver.cyclicDone = 0;
    settings.failCount = wrapped(qint64(settings.failCount) + 1);
    PLC_driver.lastFailed = true;
    settings.cycleDone = 0;
    if (settings.failCount <= settings.retryLimit)
        return false;
    settings.failCount = 0;
    PLC_driver.pendingList.clear();
    return true;
}

/// Applies the outcome: retire, retry or give up. Returns the status of the exchange. The caller holds
/// listMutex.
int endExchange(int judged, bool remote)
{
    if (isSuccess(judged)) {
        if (countReply(remote))
            retireEntry(remote);
        return judged;
    }
    if (!countFailure())
        return StatusRetry;
    retireEntry(remote);
    callItemNotify(PLC_driver.result.hostId);
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

    QByteArray noBytes;
    QByteArray *const received = reply ? reply : &noBytes;
    const bool remote = request->var.linkId != PLC_driver.comInfo->linkId;
    const bool isReadHalf = request->var.subIndex == SubIndexReadHalf;
    BriefLock lock;
    if (isReadHalf) // judging stores the reply, which reads the head of writeList to complete the write half
        lock.take(&PLC_driver.listMutex);
    const int judged =
        remote ? DealDataOfRemoteArea(received, length) : DealDataOfLocalArea(received, length);
    if (!isReadHalf)
        lock.take(&PLC_driver.listMutex);
    PLC_driver.result.status = endExchange(judged, remote);
    return &PLC_driver.result;
}
