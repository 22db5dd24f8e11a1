// SPDX-License-Identifier: MIT
#include "grouping.h"

#include "pieces.h"
#include "read_list.h"

#include "../driver/arithmetic.h"
#include "../driver/driver_object.h"

#include <algorithm>

using arithmetic::ceilDiv;
using arithmetic::saturated;

namespace {

/// A run of bits or registers, in 64 bits so that no end overflows.
struct Run
{
    qint64 start, end;
};

Run runOf(const RW_VAR &var)
{
    return {var.startAddress, qint64(var.startAddress) + var.dataLength};
}

bool liesInside(const Run &run, const Run &group)
{
    return run.start < group.end && run.end <= group.end;
}

/// Widens the request that was appended last.
void widen(int count, int length)
{
    if (count >= 1 && count <= PLC_driver.readList.size())
        PLC_driver.readList[count - 1].dataLength = length;
}

/// The merge of registers (element 1) and of bits in whole bytes (element 8). `limit`, `start` and
/// runs count registers or bits, requests count registers or bytes.
int merge(const QList<RW_VAR> &sorted, int limit, int count, int element)
{
    Run group = {0, 0};
    for (int i = 0; i < sorted.size(); ++i) {
        const Run run = runOf(sorted.at(i));
        if (i > 0 && liesInside(run, group))
            continue;
        const bool joins = i > 0 && run.end - group.start <= limit;
        if (!joins)
            group.start = run.start & ~qint64(element - 1);
        const qint64 length = ceilDiv(run.end - group.start, element);
        group.end = group.start + length * element;
        if (joins) {
            widen(count, saturated(length));
            continue;
        }
        RW_VAR request = sorted.at(i);
        request.startAddress = saturated(group.start);
        request.dataLength = saturated(length);
        AddListReadVar(&request);
        ++count;
    }
    return count;
}

} // namespace

void WhetherGroup(int length, int limit, RW_VAR *var, QList<RW_VAR> *list)
{
    if (length <= qMax(0, limit)) {
        list->append(*var);
        return;
    }
    const varlists::Pieces pieces = varlists::cut(length, limit);
    const qint64 start = var->startAddress;
    for (int k = 0; k < pieces.count; ++k) {
        var->startAddress = arithmetic::wrapped(start + pieces.offset(k));
        var->dataLength = pieces.length(k);
        list->append(*var);
    }
}

void Bubble_Sort(QList<RW_VAR> *list)
{
    if (list->size() < 2)
        return;
    std::stable_sort(list->begin(), list->end(),
                     [](const RW_VAR &a, const RW_VAR &b) { return a.startAddress < b.startAddress; });
}

int WordVarReCreat(QList<RW_VAR> *sorted, int limit, int count)
{
    return merge(*sorted, qMax(0, limit), count, 1);
}

int BitVarReCreat(QList<RW_VAR> *sorted, int limitBits, int count)
{
    return merge(*sorted, qMax(0, limitBits), count, 8);
}
