// SPDX-License-Identifier: MIT
#include "write_queueing.h"

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

} // namespace

void queueWrites(const DriverLibrary &driver, int block, QList<WriteItem> *items)
{
    std::map<Place, WriteItem *>
        ownerOf; // whose value is queued; none of the head, which is never merged with
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
