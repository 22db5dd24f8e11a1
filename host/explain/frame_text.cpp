// SPDX-License-Identifier: MIT
#include "frame_text.h"

#include "field_reader.h"

QString FrameText::summary() const
{
    return faults.isEmpty() ? meaning : filled("%1; faulty: %2", meaning, faults.first());
}

FrameText frameText(const QByteArray &frame, FrameKind kind)
{
    return kind == FrameKind::Remote ? remoteText(frame) : modbusText(frame, kind == FrameKind::Reply);
}

QList<FrameKind> likelyKinds(const QByteArray &frame)
{
    const auto faultsOf = [&](FrameKind kind) { return frameText(frame, kind).faults.size(); };
    const int request = faultsOf(FrameKind::Request);
    const int reply = faultsOf(FrameKind::Reply);
    if (faultsOf(FrameKind::Remote) < qMin(request, reply))
        return {FrameKind::Remote};
    if (request == reply)
        return {FrameKind::Request, FrameKind::Reply};
    return {request < reply ? FrameKind::Request : FrameKind::Reply};
}
