// SPDX-License-Identifier: MIT
#include "writes.h"

#include "filled.h"
#include "poll_list.h"

#include <map>
#include <tuple>

namespace {

/// What a queued write is merged by: unit, area, address, length.
using Place = std::tuple<int, int, int, int>;

/// The driver would cut a 32-bit value in two at an odd block.
int longestPiece(const Variable &variable, int block)
{
    if (variable.width() == 1)
        return 1;
    return isPairArea(variable.area) ? block & ~1 : block;
}

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

void queueWrites(const DriverLibrary &driver, int block, QList<WriteItem> *items)
{
    std::map<Place, WriteItem *> ownerOf; // whose value is queued; the head is never merged with
    int queueLength = 0;
    for (int i = 0; i < items->size(); ++i) {
        WriteItem &item = (*items)[i];
        Variable piece = item.variable;
        const int longest = longestPiece(piece, block);
        const int bytesEach = qMin(2, piece.width());
        for (int left = piece.driverCount(), at = 0; left > 0; left -= longest, at += longest) {
            const int count = qMin(longest, left);
            piece.address = item.variable.address + at;
            QByteArray bytes = item.value.mid(at * bytesEach, count * bytesEach);
            const int length = driver.setRegisterData(piece.name, piece.area, piece.addressText(), piece.unit,
                                                      bytes, count, panelHostId, i);
            WriteItem *&owner = ownerOf[{piece.unit, piece.area, piece.address, count}];
            ++item.requests;
            if (length > queueLength) {
                ++item.queued;
            } else if (owner) {
                --owner->queued;
                ++owner->replaced;
                ++item.queued;
                ++item.merged;
            } else {
                ++item.dropped;
                continue;
            }
            if (queueLength > 0)
                owner = &item;
            queueLength = length;
        }
    }
}

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
