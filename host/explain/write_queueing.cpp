// SPDX-License-Identifier: MIT
#include "write_queueing.h"

#include "poll_list.h"

#include <map>
#include <tuple>

using namespace modbus_driver;

namespace {

/// What a queued write is merged by: unit, area, address, length.
using Place = std::tuple<int, int, int, int>;

/// One request of an item.
struct Piece
{
    int address;
    int length; ///< bits or registers
    QByteArray bytes;
};

/// The driver would cut a 32-bit value in two at an odd block.
int longestPiece(const Variable &variable, int block)
{
    if (variable.width() == 1)
        return 1;
    return isPairArea(variable.area) ? block & ~1 : block;
}

QList<Piece> piecesOf(const WriteItem &item, int block)
{
    QList<Piece> pieces;
    const int bytesEach = qMin(2, item.variable.width());
    const int longest = longestPiece(item.variable, block);
    const int count = item.variable.driverCount();
    for (int at = 0; at < count; at += longest) {
        const int length = qMin(longest, count - at);
        pieces << Piece{item.variable.address + at, length,
                        item.value.mid(at * bytesEach, length * bytesEach)};
    }
    return pieces;
}

QString addressText(int area, int address)
{
    return isBitOfRegister(area)
               ? QStringLiteral("%1.%2").arg(address / BitsOfRegister).arg(address % BitsOfRegister)
               : QString::number(address);
}

} // namespace

void queueWrites(const DriverLibrary &driver, int block, QList<WriteItem> *items)
{
    std::map<Place, int> ownerOf; // the item whose value is queued; the head is never merged with
    int queueLength = 0;
    for (int i = 0; i < items->size(); ++i) {
        WriteItem &item = (*items)[i];
        const Variable &variable = item.variable;
        for (Piece piece : piecesOf(item, block)) {
            const Place place = {variable.unit, variable.area, piece.address, piece.length};
            const int length = driver.setRegisterData(
                variable.name, variable.area, addressText(variable.area, piece.address), variable.unit,
                piece.bytes, piece.length, panelHostId, i);
            const bool isHead = queueLength == 0;
            const auto owner = ownerOf.find(place);
            ++item.requests;
            if (length > queueLength) {
                ++item.queued;
            } else if (owner != ownerOf.end()) {
                --(*items)[owner->second].queued;
                ++(*items)[owner->second].replaced;
                ++item.queued;
                ++item.merged;
            } else {
                ++item.dropped;
                continue;
            }
            queueLength = length;
            if (!isHead)
                ownerOf[place] = i;
        }
    }
}
