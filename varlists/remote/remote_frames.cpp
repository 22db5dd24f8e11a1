// SPDX-License-Identifier: MIT
#include "../../driver/api/codes.h"
#include "../../driver/api/steps/checksums.h"
#include "../../driver/api/steps/image_access.h"
#include "../../driver/api/steps/request_builders.h"
#include "../../driver/base/pending_requests.h"
#include "../../driver/base/remote_wire.h"

using namespace modbus_driver;

namespace {

/// Appends the low `bytes` bytes of a number, high byte first.
void append(QByteArray *frame, int value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        frame->append(static_cast<char>((static_cast<unsigned>(value) >> shift) & 0xFF));
}

/// The byte sum of a frame of any length. CalSUM takes a 16-bit count, so it is called for parts of the
/// frame.
int byteSumOf(const QByteArray &frame)
{
    const int most = 0xFFFF;
    int sum = 0;
    for (int from = 0; from < frame.size(); from += most) {
        const unsigned char *bytes = reinterpret_cast<const unsigned char *>(frame.constData()) + from;
        sum += CalSUM(bytes, static_cast<unsigned short>(qMin(most, frame.size() - from)));
    }
    return sum;
}

/// The frame for this access, with these value bytes.
QByteArray remoteFrame(const RW_VAR &var, const QByteArray &value)
{
    QByteArray frame;
    frame.reserve(remoteWire::ShortestFrame + value.size());
    append(&frame, remoteWire::ShortestFrame + value.size(), 1);
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
    append(&frame, byteSumOf(frame), 1);
    return frame;
}

} // namespace

void Remote_ReadVar(RW_VAR *var)
{
    if (!isBitArea(var->area))
        return;
    appendRequest(remoteFrame(*var, QByteArray()), readReply(var->station, var->dataLength), *var);
    expectReplies(1);
}

void Remote_WriteVar(RW_VAR *var)
{
    appendRequest(remoteFrame(*var, var->data), writeEcho(var->station), *var);
    expectReplies(1);
    WriteDataToLocal(var);
}
