// SPDX-License-Identifier: MIT
#include "remote_frames.h"

#include "areas.h"

#include "../driver/checksums.h"
#include "../frames/transaction.h"
#include "../image/local_writes.h"

namespace varlists {

namespace {

/// The low `bytes` bytes of a number, high byte first.
void append(QByteArray *frame, int value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        frame->append(static_cast<char>((static_cast<unsigned>(value) >> shift) & 0xFF));
}

/// The byte sum of a frame of any length; CalSUM counts in 16 bits.
int byteSum(const QByteArray &frame)
{
    const int most = 0xFFFF;
    int sum = 0;
    for (int from = 0; from < frame.size(); from += most) {
        const unsigned char *bytes = reinterpret_cast<const unsigned char *>(frame.constData()) + from;
        sum += CalSUM(bytes, static_cast<unsigned short>(qMin(most, frame.size() - from)));
    }
    return sum;
}

} // namespace

QByteArray remoteFrame(const RW_VAR &var, const QByteArray &value)
{
    const int fixedLength = 22; // all fields and the checksum
    QByteArray frame;
    frame.reserve(fixedLength + value.size());
    append(&frame, fixedLength + value.size(), 1);
    append(&frame, var.hostId, 1);
    append(&frame, var.rwFlag, 1);
    append(&frame, var.linkId, 1);
    append(&frame, var.station, 1);
    append(&frame, var.area, 2);
    append(&frame, var.startAddress, 4);
    append(&frame, var.dataLength, 2);
    append(&frame, var.subIndex, 4);
    append(&frame, var.aux, 4);
    frame.append(value);
    append(&frame, byteSum(frame), 1);
    return frame;
}

} // namespace varlists

void Remote_ReadVar(RW_VAR *var)
{
    if (!varlists::isBitArea(var->area))
        return;
    transaction::append(varlists::remoteFrame(*var, QByteArray()),
                        transaction::readReply(var->station, var->dataLength), *var);
    transaction::expectReplies(1);
}

void Remote_WriteVar(RW_VAR *var)
{
    transaction::append(varlists::remoteFrame(*var, var->data), transaction::writeEcho(var->station), *var);
    transaction::expectReplies(1);
    WriteDataToLocal(var);
}
