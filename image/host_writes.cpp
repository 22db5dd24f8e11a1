// SPDX-License-Identifier: MIT
#include "../driver/api/host_calls.h"
#include "../driver/api/steps/driver_object.h"
#include "../driver/api/steps/image_access.h"
#include "../driver/base/arithmetic.h"
#include "../varlists/address_text.h"
#include "../varlists/blocks.h"

#include <cstring>

using namespace modbus_driver;

namespace {

/// A copy of `size` bytes from `from` on. Bytes that the value lacks are 0. Always a deep copy, because the
/// value may refer to memory of the host (QByteArray::fromRawData).
QByteArray part(const QByteArray &value, int from, int size)
{
    QByteArray bytes(size, '\0');
    const int held = qBound(0, value.size() - from, size);
    if (held > 0)
        std::memcpy(bytes.data(), value.constData() + from, static_cast<std::size_t>(held));
    return bytes;
}

/// Queues one block. While the station does not answer, the image gets the value at once, so that the panel
/// shows the value that the user entered.
int queueBlock(RW_VAR *var, int address, int length, const QByteArray &data)
{
    var->startAddress = address;
    var->dataLength = length;
    var->data = data;
    const int queued = AddListWriteVar(var, QueueMerged);
    if (PLC_driver.lastFailed)
        WriteDataToLocal(var);
    return queued;
}

int queueBits(RW_VAR *var, int address, const QByteArray &value, int count)
{
    int queued = 0;
    for (int i = 0; i < count; ++i)
        queued = queueBlock(var, wrapped(qint64(address) + i), 1, part(value, i, 1));
    return queued;
}

int queueRegisters(RW_VAR *var, int address, const QByteArray &value, int count)
{
    const Blocks blocks = splitIntoBlocks(count, PLC_driver.comInfo->writeBlockSize);
    int queued = 0;
    for (int k = 0; k < blocks.count; ++k) {
        const int offset = blocks.offset(k);
        const int length = blocks.length(k);
        queued =
            queueBlock(var, wrapped(qint64(address) + offset), length, part(value, 2 * offset, 2 * length));
    }
    return queued;
}

int queueWrite(RW_VAR *var, int address, const QByteArray &value, int count)
{
    switch (var->area) {
    case AreaCoils:
    case AreaHoldingRegisterBit:
        return queueBits(var, address, value, qMin(count, int(ImageBits)));
    case AreaHoldingRegisters:
    case AreaHoldingPairs:
        return queueRegisters(var, address, value, qMin(count, int(ImageRegisters)));
    default:
        return 0;
    }
}

} // namespace

int SetRegisterData(QString tagText, int area, QString addressText, int station, QByteArray &value, int count,
                    int hostId, int hostItem)
{
    const int address = addressOf(area, addressText);
    if (address < 0)
        return 0;
    const CommSettings &settings = *PLC_driver.comInfo;
    RW_VAR var;
    var.hostId = hostId;
    var.hostItem = hostItem;
    var.rwFlag = AccessWrite;
    var.remoteMode = settings.remoteMode;
    var.linkId = settings.linkId;
    var.tagText = tagText;
    var.addressText = addressText;
    var.area = area;
    var.station = settings.multiStation != 0 ? station : settings.defaultStation;
    if (settings.writeMode == WriteModeToStation)
        return queueWrite(&var, address, value, count);
    var.startAddress = address;
    var.dataLength = count;
    var.data = value;
    WriteDataToLocal(&var);
    return 1;
}
