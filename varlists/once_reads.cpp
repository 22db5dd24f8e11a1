// SPDX-License-Identifier: MIT
#include "once_reads.h"

#include "address_text.h"
#include "areas.h"
#include "pieces.h"
#include "write_queue.h"

#include "../driver/arithmetic.h"
#include "../driver/driver_object.h"

#include <QtCore/QMutexLocker>

namespace {

/// How many groups of `size` bits a run of bits from `address` touches.
int groupsTouched(int address, int bits, int size)
{
    return arithmetic::saturated(arithmetic::ceilDiv(qint64(address % size) + bits, size));
}

/// From the host's area, address and count to those of a request. Unknown areas stay as they are.
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
    return a.hostId == b.hostId && a.hostItem == b.hostItem && a.station == b.station && a.area == b.area &&
           a.startAddress == b.startAddress && a.dataLength == b.dataLength;
}

bool isQueued(const QList<RW_VAR> &queue, const RW_VAR &var)
{
    for (int i = 0; i < queue.size(); ++i) {
        if (sameRead(queue.at(i), var))
            return true;
    }
    return false;
}

/// Makes var piece k of the run that starts at `base`. A block of a bit area is a number of bytes.
void becomePiece(RW_VAR *var, int base, const varlists::Pieces &pieces, int k)
{
    const int addressesPerElement = varlists::isBitArea(var->area) ? 8 : 1;
    var->startAddress = arithmetic::wrapped(base + qint64(pieces.offset(k)) * addressesPerElement);
    var->dataLength = pieces.length(k);
}

void queuePieces(RW_VAR *var, const varlists::Pieces &pieces)
{
    QList<RW_VAR> &queue = PLC_driver.onceReadList;
    const int base = var->startAddress;
    // A full queue takes no further piece, however many there are.
    for (int k = 0; k < pieces.count && queue.size() < varlists::queueLimit; ++k) {
        becomePiece(var, base, pieces, k);
        if (!isQueued(queue, *var))
            queue.append(*var);
    }
    if (pieces.count > 0)
        becomePiece(var, base, pieces, pieces.count - 1);
}

} // namespace

int AddListOnceReadVar(RW_VAR *var, int mode)
{
    if (mode == 1) {
        QMutexLocker lock(&PLC_driver.listMutex);
        PLC_driver.onceReadList.append(*var);
        return PLC_driver.onceReadList.size();
    }
    const int address = varlists::addressOf(var->area, var->addressText);
    if (address < 0)
        return 0;
    const CommSettings &settings = *PLC_driver.comInfo;
    var->subIndex = 0;
    var->aux = 0;
    if (settings.multiStation == 0)
        var->station = settings.defaultStation;
    makeRequest(var, address);
    const varlists::Pieces pieces = varlists::cut(var->dataLength, settings.writeBlockSize);
    QMutexLocker lock(&PLC_driver.listMutex);
    queuePieces(var, pieces);
    return PLC_driver.onceReadList.size();
}
