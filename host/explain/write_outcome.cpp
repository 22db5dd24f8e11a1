// SPDX-License-Identifier: MIT
#include "write_outcome.h"

namespace {

QString partText(int part, int whole, const QString &what)
{
    return part == whole ? what : QStringLiteral("%1 of %2 requests %3").arg(part).arg(whole).arg(what);
}

/// The outcome of the requests that stayed in the queue to the end.
WriteOutcome queuedOutcome(const WriteItem &item, const ItemResult &result)
{
    const bool isBroadcast = item.variable.unit == modbus_driver::StationBroadcast;
    const QString served = isBroadcast ? QStringLiteral("sent to all units, none answers a broadcast")
                                       : QStringLiteral("acknowledged");
    if (result.served >= item.queued)
        return {WriteOutcome::Done, partText(item.queued, item.requests, served)};
    QString ahead;
    if (result.served > 0)
        ahead = partText(result.served, item.requests, served) + QStringLiteral(", then ");
    if (result.mayBeDone)
        return {WriteOutcome::Unknown,
                QStringLiteral("%1outcome unknown: %2; it may or may not have been carried out")
                    .arg(ahead, result.failure)};
    if (result.failure.startsWith(QLatin1String("exception")))
        return {WriteOutcome::Failed, QStringLiteral("%1refused with %2").arg(ahead, result.failure)};
    const QString why =
        result.failure.isEmpty() ? QStringLiteral("stopped before it was sent") : result.failure;
    return {WriteOutcome::Failed, QStringLiteral("%1not done: %2").arg(ahead, why)};
}

} // namespace

WriteOutcome writeOutcome(const WriteItem &item, const ItemResult &result)
{
    WriteOutcome outcome;
    if (item.queued > 0)
        outcome = queuedOutcome(item, result);
    QStringList texts;
    if (!outcome.text.isEmpty())
        texts << outcome.text;
    if (item.merged > 0)
        texts << partText(item.merged, item.requests, QStringLiteral("merged with an earlier write"));
    if (item.replaced > 0)
        texts << partText(item.replaced, item.requests,
                          QStringLiteral("replaced by a later write before it was sent"));
    if (item.dropped > 0) {
        texts << partText(item.dropped, item.requests, QStringLiteral("dropped, the queue is full"));
        outcome.end = outcome.end == WriteOutcome::Done ? WriteOutcome::Failed : outcome.end;
    }
    outcome.text = texts.join(QStringLiteral("; "));
    return outcome;
}
