// SPDX-License-Identifier: MIT
#include "write_outcome.h"

#include "filled.h"

namespace {

QString partText(int part, int whole, const char *what)
{
    return part == whole ? asText(what) : filled("%1 of %2 requests %3", part, whole, what);
}

/// The outcome of the requests that stayed in the queue to the end.
WriteOutcome queuedOutcome(const WriteItem &item, const ItemResult &result)
{
    const bool isBroadcast = item.variable.unit == modbus_driver::StationBroadcast;
    const char *const served = isBroadcast ? "sent to all units, none answers a broadcast" : "acknowledged";
    if (result.served >= item.queued)
        return {WriteOutcome::Done, partText(item.queued, item.requests, served)};
    QString ahead;
    if (result.served > 0)
        ahead = partText(result.served, item.requests, served) + QStringLiteral(", then ");
    const QString &failure = result.failure;
    if (result.mayBeDone)
        return {WriteOutcome::Unknown,
                filled("%1outcome unknown: %2; it may or may not have been carried out", ahead, failure)};
    if (failure.startsWith(QLatin1String("exception")))
        return {WriteOutcome::Failed, filled("%1refused with %2", ahead, failure)};
    return {WriteOutcome::Failed, filled("%1not done: %2", ahead,
                                         failure.isEmpty() ? asText("stopped before it was sent") : failure)};
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
    const auto note = [&](int part, const char *what) {
        if (part > 0)
            texts << partText(part, item.requests, what);
    };
    note(item.merged, "merged with an earlier write");
    note(item.replaced, "replaced by a later write before it was sent");
    note(item.dropped, "dropped, the queue is full");
    if (item.dropped > 0 && outcome.end == WriteOutcome::Done)
        outcome.end = WriteOutcome::Failed;
    outcome.text = texts.join(QStringLiteral("; "));
    return outcome;
}
