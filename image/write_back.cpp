// SPDX-License-Identifier: MIT
#include "write_back.h"

#include "../driver/driver_object.h"
#include "../frames/mbap.h"

namespace {

/// The value with the bit that the queued write asks for.
quint16 withBitOf(const RW_VAR &write, quint16 value)
{
    if (write.data.isEmpty() || write.startAddress < 0)
        return value;
    const int mask = 1 << (write.startAddress % 16);
    if (write.data.at(0) == 1)
        return static_cast<quint16>(value | mask);
    if (write.data.at(0) == 0)
        return static_cast<quint16>(value & ~mask);
    return value;
}

} // namespace

namespace image {

void completeWriteBack(quint16 value)
{
    QList<Protocol> &pending = PLC_driver.pendingList;
    if (pending.size() < 2 || pending.at(0).var.subIndex != -1)
        return;
    const QList<RW_VAR> &writes = PLC_driver.writeList;
    if (!writes.isEmpty())
        value = withBitOf(writes.at(0), value);
    QByteArray &frame = pending[1].frame;
    if (frame.size() < mbap::RequestLength)
        frame.append(QByteArray(mbap::RequestLength - frame.size(), '\0'));
    frame[mbap::ValueHigh] = static_cast<char>(value >> 8);
    frame[mbap::ValueLow] = static_cast<char>(value & 0xFF);
}

} // namespace image
