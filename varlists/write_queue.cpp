// SPDX-License-Identifier: MIT
#include "../driver/api/host_calls.h"
#include "../driver/api/steps/driver_object.h"
#include "../driver/base/brief_lock.h"

#include <algorithm>

using namespace modbus_driver;

namespace {

/// True for writes to the same addresses. Values, hostId and hostItem are not compared.
bool samePlace(const RW_VAR &a, const RW_VAR &b)
{
    return a.startAddress == b.startAddress && a.station == b.station && a.area == b.area &&
           a.dataLength == b.dataLength;
}

/// The position of the queued write that var may overwrite, or -1. The head is left out, because it may be in
/// flight.
int findMergeable(const QList<RW_VAR> &queue, const RW_VAR &var)
{
    if (queue.isEmpty())
        return -1;
    const auto head = queue.constBegin();
    const auto found = std::find_if(head + 1, queue.constEnd(),
                                    [&var](const RW_VAR &queued) { return samePlace(queued, var); });
    return found == queue.constEnd() ? -1 : static_cast<int>(found - head);
}

} // namespace

int AddListWriteVar(RW_VAR *var, int mode)
{
    BriefLock lock(&PLC_driver.listMutex);
    QList<RW_VAR> &queue = PLC_driver.writeList;
    const bool asIs = mode == QueueAsIs;
    const int merged = asIs ? -1 : findMergeable(queue, *var);
    if (merged >= 0)
        queue[merged] = *var;
    else if (asIs || queue.size() < QueueLimit)
        queue.append(*var);
    return queue.size();
}
