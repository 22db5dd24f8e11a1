// SPDX-License-Identifier: MIT
#include "field_reader.h"
#include "variable.h"

#include "../../driver/base/block_checks.h"

using namespace modbus_driver;

namespace {

QString accessName(int access)
{
    if (access > AccessWrite)
        return filled("access %1", access);
    return asText(access == AccessRead ? "read" : "write");
}

/// The unit of the length: bytes of eight bits in bit reads, else bits or registers.
QString lengthText(int access, int area, int count)
{
    if (isBitArea(area) && access == AccessRead)
        return counted(count, "byte") + asText(" of eight bits");
    return counted(count, isBitArea(area) || isBitOfRegister(area) ? "bit" : "register");
}

/// The sum that closes the frame: of all bytes before it, modulo 256.
int sumDue(const QByteArray &frame)
{
    const auto *const bytes = reinterpret_cast<const unsigned char *>(frame.constData());
    return byteSum(bytes, static_cast<unsigned>(qMax(0, frame.size() - 1))) & 0xFF;
}

} // namespace

FrameText remoteText(const QByteArray &frame)
{
    FieldReader reader(frame);
    const int size = reader.take("frame length", 1);
    reader.means("%1 bytes, modulo 256", size);
    reader.check(size == (frame.size() & 0xFF), "the frame length says %1, but there are %2 bytes", size,
                 frame.size());
    reader.take("host id", 1);
    const int access = reader.take("access", 1);
    reader.means("%1, %2", access, accessName(access));
    reader.check(access <= AccessWrite, "access %1 is neither 0, a read, nor 1, a write", access);
    reader.take("link", 1);
    const int station = reader.take("station", 1);
    const int area = reader.take("area", 2);
    reader.means("%1, %2", area, areaName(area));
    reader.check(area <= AreaHoldingPairs, "there is no area %1", area);
    reader.check(access != AccessRead || isBitArea(area), "only areas 0 and 1 are read in this form");
    const int address = reader.take("start address", 4);
    if (isBitOfRegister(area))
        reader.means("%1, bit %2 of register %3", address, address & (BitsOfRegister - 1), address >> 4);
    const QString length = lengthText(access, area, reader.take("length", 2));
    reader.means("%1", length);
    reader.take("sub-index", 4);
    reader.take("auxiliary", 4);
    const QByteArray value = reader.takeBytes(asText("value"), qMax(0, reader.left() - 1));
    if (!value.isEmpty())
        reader.means("least significant byte first");
    reader.check(access != AccessRead || value.isEmpty(), "a read carries no value bytes");
    const int sum = reader.take("checksum", 1);
    reader.check(sum == sumDue(frame), "the checksum is %1, but the bytes before it sum up to %2", sum,
                 sumDue(frame));
    reader.notes.meaning = filled("station %1: remote %2 %3:%4, %5", station, accessName(access),
                                  areaName(area), address, length);
    return reader.notes;
}
