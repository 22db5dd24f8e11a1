// SPDX-License-Identifier: MIT
// The merging steps for hosts that call them with finished records. ReCreatReadVarList (read_list.cpp) does
// not use them.
#include "blocks.h"
#include "run_merge.h"

#include "../driver/api/host_calls.h"
#include "../driver/api/steps/driver_object.h"
#include "../driver/api/steps/list_building.h"
#include "../driver/base/arithmetic.h"

#include <algorithm>

using namespace modbus_driver;

namespace {

/// Sets the length of the request that was appended last.
void widen(int count, int length)
{
    if (count >= 1 && count <= PLC_driver.readList.size())
        PLC_driver.readList[count - 1].dataLength = length;
}

int appendRequests(const QList<RW_VAR> &sorted, RunMerge merge, int count)
{
    for (int i = 0; i < sorted.size(); ++i) {
        RW_VAR request = sorted.at(i);
        const RunMerge::Effect effect = merge.take(request.startAddress, request.dataLength);
        if (effect == RunMerge::Extended)
            widen(count, merge.length());
        if (effect != RunMerge::Started)
            continue;
        request.startAddress = merge.start();
        request.dataLength = merge.length();
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
    const Blocks blocks = splitIntoBlocks(length, limit);
    const qint64 start = var->startAddress;
    for (int k = 0; k < blocks.count; ++k) {
        var->startAddress = wrapped(start + blocks.offset(k));
        var->dataLength = blocks.length(k);
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
    return appendRequests(*sorted, RunMerge(limit, 1), count);
}

int BitVarReCreat(QList<RW_VAR> *sorted, int limitBits, int count)
{
    return appendRequests(*sorted, RunMerge(limitBits, 8), count);
}
