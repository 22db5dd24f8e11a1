// SPDX-License-Identifier: MIT
#include "fault_choice.h"

namespace {
bool overlaps(const Fault::Range &range, int first, int count)
{
    return first <= range.last && qint64(first) + count > range.first;
}

bool matches(const Fault &fault, const RequestFacts &request)
{
    return overlaps(fault.unit, request.unit, 1) && overlaps(fault.function, request.function, 1) &&
           overlaps(fault.address, request.address, request.count);
}

// Counts one more selected request or connection. True when the fault applies to it.
bool countAndDecide(Fault &fault)
{
    ++fault.selected;
    if (fault.selected % fault.every != 0 || (fault.nth != 0 && fault.selected != fault.nth))
        return false;
    ++fault.applied;
    return true;
}

bool matchesAndCounts(Fault &fault, const RequestFacts &request)
{
    return fault.kind != Fault::Greet && matches(fault, request) && countAndDecide(fault);
}

Fault withNextValue(Fault fault)
{
    if (fault.lastValue > fault.value)
        fault.value += (fault.applied - 1) % (fault.lastValue - fault.value + 1);
    return fault;
}
} // namespace

QList<Fault> chooseFaults(QList<Fault> &faults, const RequestFacts &request)
{
    QList<Fault> chosen;
    for (Fault &fault : faults) {
        if (matchesAndCounts(fault, request))
            chosen << withNextValue(fault);
    }
    return chosen;
}

QList<Fault> chooseGreetings(QList<Fault> &faults)
{
    QList<Fault> chosen;
    for (Fault &fault : faults) {
        if (fault.kind == Fault::Greet && countAndDecide(fault))
            chosen << fault;
    }
    return chosen;
}
