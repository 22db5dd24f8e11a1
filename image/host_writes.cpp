// SPDX-License-Identifier: MIT
#include "host_writes.h"

#include "local_writes.h"

#include "../driver/arithmetic.h"
#include "../driver/driver_object.h"
#include "../varlists/address_text.h"
#include "../varlists/areas.h"
#include "../varlists/pieces.h"
#include "../varlists/write_queue.h"

#include <cstring>

namespace {

const int writeToStation = 2; // CommSettings::writeMode

/// A copy of `size` bytes from `from` on; those that the value lacks are 0. Never the value's own array, which
/// may be memory of the host's (QByteArray::fromRawData).
QByteArray part(const QByteArray &value, int from, int size)
{
    QByteArray bytes(size, '\0');
    const int held = qBound(0, value.size() - from, size);
    if (held > 0)
        std::memcpy(bytes.data(), value.constData() + from, static_cast<std::size_t>(held));
    return bytes;
}

/// Queues one piece. A panel whose station does not answer still shows what was entered.
int queuePiece(RW_VAR *var, int address, int length, const QByteArray &data)
{
    var->startAddress = address;
    var->dataLength = length;
    var->data = data;
    const int queued = AddListWriteVar(var, 0);
    if (PLC_driver.lastFailed)
        WriteDataToLocal(var);
    return queued;
}

int queueBits(RW_VAR *var, int address, const QByteArray &value, int count)
{
    int queued = 0;
    for (int i = 0; i < count; ++i)
        queued = queuePiece(var, arithmetic::wrapped(qint64(address) + i), 1, part(value, i, 1));
    return queued;
}

int queueRegisters(RW_VAR *var, int address, const QByteArray &value, int count)
{
    const varlists::Pieces pieces = varlists::cut(count, PLC_driver.comInfo->writeBlockSize);
    int queued = 0;
    for (int k = 0; k < pieces.count; ++k) {
        const int offset = pieces.offset(k);
        const int length = pieces.length(k);
        queued = queuePiece(var, arithmetic::wrapped(qint64(address) + offset), length,
                            part(value, 2 * offset, 2 * length));
    }
    return queued;
}

int queueWrite(RW_VAR *var, int address, const QByteArray &value, int count)
{
    switch (var->area) {
    case AreaCoils:
    case AreaHoldingRegisterBit:
        return queueBits(var, address, value, qMin(count, int(image::bitCount)));
    case AreaHoldingRegisters:
    case AreaHoldingPairs:
        return queueRegisters(var, address, value, qMin(count, int(image::registerCount)));
    default:
        return 0;
    }
}

} // namespace

int SetRegisterData(QString tagText, int area, QString addressText, int station, QByteArray &value, int count,
                    int hostId, int hostItem)
{
    const int address = varlists::addressOf(area, addressText);
    if (address < 0)
        return 0;
    const CommSettings &settings = *PLC_driver.comInfo;
    RW_VAR var;
    var.hostId = hostId;
    var.hostItem = hostItem;
    var.rwFlag = 1;
    var.remoteMode = settings.remoteMode;
    var.linkId = settings.linkId;
    var.tagText = tagText;
    var.addressText = addressText;
    var.area = area;
    var.station = settings.multiStation != 0 ? station : settings.defaultStation;
    if (settings.writeMode == writeToStation)
        return queueWrite(&var, address, value, count);
    var.startAddress = address;
    var.dataLength = count;
    var.data = value;
    WriteDataToLocal(&var);
    return 1;
}
