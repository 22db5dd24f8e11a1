// SPDX-License-Identifier: MIT
#include "fault_choice.h"

namespace {
bool overlaps(const Fault::Range &range, int first, int count)
{
    return first <= range.last && qint64(first) + count > range.first;
}

// Counts the request if the fault selects it, and tells whether the fault applies to it.
bool matchesAndCounts(Fault &fault, const RequestFacts &request)
{
    if (!overlaps(fault.unit, request.unit, 1) || !overlaps(fault.function, request.function, 1) ||
        !overlaps(fault.address, request.address, request.count))
        return false;
    ++fault.selected;
    return fault.selected % fault.every == 0 && (fault.nth == 0 || fault.selected == fault.nth);
}
} // namespace

QList<Fault> chooseFaults(QList<Fault> &faults, const RequestFacts &request)
{
    QList<Fault> chosen;
    for (Fault &fault : faults) {
        if (matchesAndCounts(fault, request))
            chosen << fault;
    }
    return chosen;
}
