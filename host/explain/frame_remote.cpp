// SPDX-License-Identifier: MIT
#include "frame_dissection.h"

#include "variable.h"

#include "../../driver/api/codes.h"
#include "../../driver/base/block_checks.h"

using namespace modbus_driver;

namespace {

QString accessName(int access)
{
    return access == AccessRead    ? QStringLiteral("read")
           : access == AccessWrite ? QStringLiteral("write")
                                   : QStringLiteral("access %1").arg(access);
}

/// The unit of the length: bytes of eight bits in bit reads, else bits or registers.
QString lengthText(int access, int area, int count)
{
    const QString s = count == 1 ? QString() : QStringLiteral("s");
    if (!isBitArea(area) && !isBitOfRegister(area))
        return QStringLiteral("%1 register%2").arg(count).arg(s);
    if (access == AccessRead)
        return QStringLiteral("%1 byte%2 of eight bits").arg(count).arg(s);
    return QStringLiteral("%1 bit%2").arg(count).arg(s);
}

QString addressMeaning(int area, int address)
{
    if (isBitOfRegister(area))
        return QStringLiteral("%1, bit %2 of register %3")
            .arg(address)
            .arg(address & (BitsOfRegister - 1))
            .arg(address >> 4);
    return QString::number(address);
}

/// The sum that closes the frame: of all bytes before it, modulo 256.
int sumDue(const QByteArray &frame)
{
    const auto *const bytes = reinterpret_cast<const unsigned char *>(frame.constData());
    return byteSum(bytes, static_cast<unsigned>(qMax(0, frame.size() - 1))) & 0xFF;
}

} // namespace

FrameDissection dissectRemote(const QByteArray &frame)
{
    FrameDissection notes;
    FieldReader reader(frame, &notes);
    const int length = reader.take("frame length", 1);
    reader.means(QStringLiteral("%1 bytes, modulo 256").arg(length));
    reader.check(
        length == (frame.size() & 0xFF),
        QStringLiteral("the frame length says %1, but there are %2 bytes").arg(length).arg(frame.size()));
    reader.take("host id", 1);
    const int access = reader.take("access", 1);
    reader.means(QStringLiteral("%1, %2").arg(access).arg(accessName(access)));
    reader.check(access <= AccessWrite,
                 QStringLiteral("access %1 is neither 0, a read, nor 1, a write").arg(access));
    reader.take("link", 1);
    const int station = reader.take("station", 1);
    const int area = reader.take("area", 2);
    reader.means(QStringLiteral("%1, %2").arg(area).arg(areaName(area)));
    reader.check(area <= AreaHoldingPairs, QStringLiteral("there is no area %1").arg(area));
    reader.check(access != AccessRead || isBitArea(area),
                 QStringLiteral("only areas 0 and 1 are read in this form"));
    const int address = reader.take("start address", 4);
    reader.means(addressMeaning(area, address));
    const int count = reader.take("length", 2);
    reader.means(lengthText(access, area, count));
    reader.take("sub-index", 4);
    reader.take("auxiliary", 4);
    const QByteArray value = reader.takeBytes(QStringLiteral("value"), qMax(0, reader.left() - 1));
    if (!value.isEmpty())
        reader.means(QStringLiteral("least significant byte first"));
    reader.check(access != AccessRead || value.isEmpty(), QStringLiteral("a read carries no value bytes"));
    const int due = sumDue(frame);
    const int sum = reader.take("checksum", 1);
    reader.check(
        sum == due,
        QStringLiteral("the checksum is %1, but the bytes before it sum up to %2").arg(sum).arg(due));
    notes.summary = QStringLiteral("station %1: remote %2 %3:%4, %5")
                        .arg(QString::number(station), accessName(access), areaName(area),
                             QString::number(address), lengthText(access, area, count));
    return notes;
}
