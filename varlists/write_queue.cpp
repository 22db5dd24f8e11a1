// SPDX-License-Identifier: MIT
#include "../driver/api/host_calls.h"
#include "../driver/api/steps/driver_object.h"

#include "../driver/base/brief_lock.h"

using namespace modbus_driver;

namespace {

/// Writes to the same place; their values and host identifiers are not compared.
bool samePlace(const RW_VAR &a, const RW_VAR &b)
{
    return a.station == b.station && a.area == b.area && a.startAddress == b.startAddress &&
           a.dataLength == b.dataLength;
}

/// The position of a queued write that may be overwritten, or -1. The head is not looked at.
int findMergeable(const QList<RW_VAR> &queue, const RW_VAR &var)
{
    for (int i = 1; i < queue.size(); ++i) {
        if (samePlace(queue.at(i), var))
            return i;
    }
    return -1;
}

} // namespace

int AddListWriteVar(RW_VAR *var, int mode)
{
    BriefLock lock(&PLC_driver.listMutex);
    QList<RW_VAR> &queue = PLC_driver.writeList;
    const bool asItStands = mode == QueueAsIs;
    const int merged = asItStands ? -1 : findMergeable(queue, *var);
    if (merged >= 0)
        queue[merged] = *var;
    else if (asItStands || queue.size() < QueueLimit)
        queue.append(*var);
    return queue.size();
}
