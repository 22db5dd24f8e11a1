// SPDX-License-Identifier: MIT
#include "address_text.h"
#include "blocks.h"

#include "../driver/api/host_calls.h"
#include "../driver/api/steps/driver_object.h"
#include "../driver/api/steps/list_building.h"
#include "../driver/base/arithmetic.h"
#include "../driver/base/brief_lock.h"

#include <algorithm>

using namespace modbus_driver;

namespace {

/// The number of groups of `size` bits that `bits` bits from `address` on are part of.
int groupsTouched(int address, int bits, int size)
{
    return saturated(ceilDiv(qint64(address % size) + bits, size));
}

/// Converts the host's area, address and count to those of a request. Unknown areas are not changed.
void makeRequest(RW_VAR *var, int address)
{
    switch (var->area) {
    case AreaCoils:
    case AreaDiscreteInputs:
        var->startAddress = address & ~7;
        var->dataLength = groupsTouched(address, var->dataLength, 8);
        break;
    case AreaInputRegisterBit:
    case AreaHoldingRegisterBit:
        var->startAddress = address >> 4;
        var->dataLength = groupsTouched(address, var->dataLength, 16);
        break;
    case AreaInputRegisters:
    case AreaHoldingRegisters:
    case AreaInputPairs:
    case AreaHoldingPairs:
        var->startAddress = address;
        break;
    default:
        break;
    }
    var->area = getPlcReg(var->area);
}

bool sameRead(const RW_VAR &a, const RW_VAR &b)
{
    return a.startAddress == b.startAddress && a.hostId == b.hostId && a.hostItem == b.hostItem &&
           a.station == b.station && a.area == b.area && a.dataLength == b.dataLength;
}

bool isQueued(const QList<RW_VAR> &queue, const RW_VAR &var)
{
    return std::any_of(queue.constBegin(), queue.constEnd(),
                       [&var](const RW_VAR &queued) { return sameRead(queued, var); });
}

/// Makes var the request for block k of the run that starts at `base`. Blocks of a bit area count bytes.
void setToBlock(RW_VAR *var, int base, const Blocks &blocks, int k)
{
    const int addressesPerElement = isBitArea(var->area) ? 8 : 1;
    var->startAddress = wrapped(base + qint64(blocks.offset(k)) * addressesPerElement);
    var->dataLength = blocks.length(k);
}

void queueBlocks(RW_VAR *var, const Blocks &blocks)
{
    QList<RW_VAR> &queue = PLC_driver.onceReadList;
    const int base = var->startAddress;
    for (int k = 0; k < blocks.count && queue.size() < QueueLimit; ++k) {
        setToBlock(var, base, blocks, k);
        if (!isQueued(queue, *var))
            queue.append(*var);
    }
    if (blocks.count > 0)
        setToBlock(var, base, blocks, blocks.count - 1);
}

} // namespace

int AddListOnceReadVar(RW_VAR *var, int mode)
{
    if (mode == QueueAsIs) {
        BriefLock lock(&PLC_driver.listMutex);
        PLC_driver.onceReadList.append(*var);
        return PLC_driver.onceReadList.size();
    }
    const int address = addressOf(var->area, var->addressText);
    if (address < 0)
        return 0;
    const CommSettings &settings = *PLC_driver.comInfo;
    var->subIndex = 0;
    var->aux = 0;
    if (settings.multiStation == 0)
        var->station = settings.defaultStation;
    makeRequest(var, address);
    const Blocks blocks = splitIntoBlocks(var->dataLength, settings.writeBlockSize);
    BriefLock lock(&PLC_driver.listMutex);
    queueBlocks(var, blocks);
    return PLC_driver.onceReadList.size();
}
