// SPDX-License-Identifier: MIT
#include "frame_text.h"

#include "frame_dissection.h"

namespace {

FrameDissection dissect(const QByteArray &frame, FrameKind kind)
{
    return kind == FrameKind::Remote ? dissectRemote(frame) : dissectModbus(frame, kind == FrameKind::Reply);
}

/// "4-5    00 06        length          6 bytes follow"
QString fieldLine(const FrameField &field)
{
    const int shown = 4; // bytes
    const int last = field.offset + field.bytes.size() - 1;
    const QString offsets =
        field.bytes.size() == 1 ? QString::number(last) : QStringLiteral("%1-%2").arg(field.offset).arg(last);
    QString bytes = QString::fromLatin1(field.bytes.left(shown).toHex(' ').toUpper());
    if (field.bytes.size() > shown)
        bytes += QStringLiteral(" ...");
    const QString line = QStringLiteral("%1 %2 %3 %4")
                             .arg(offsets, -7)
                             .arg(bytes, -15)
                             .arg(field.name, -14)
                             .arg(field.meaning);
    return line.trimmed();
}

} // namespace

QString frameMeaning(const QByteArray &frame, FrameKind kind)
{
    return dissect(frame, kind).summary;
}

QString frameSummary(const QByteArray &frame, FrameKind kind)
{
    const QStringList faults = frameFaults(frame, kind);
    const QString meaning = frameMeaning(frame, kind);
    return faults.isEmpty() ? meaning : QStringLiteral("%1; faulty: %2").arg(meaning, faults.first());
}

QStringList frameFields(const QByteArray &frame, FrameKind kind)
{
    QStringList lines;
    for (const FrameField &field : dissect(frame, kind).fields)
        lines << fieldLine(field);
    return lines;
}

QStringList frameFaults(const QByteArray &frame, FrameKind kind)
{
    return dissect(frame, kind).faults;
}

QList<FrameKind> likelyKinds(const QByteArray &frame)
{
    const auto request = frameFaults(frame, FrameKind::Request).size();
    const auto reply = frameFaults(frame, FrameKind::Reply).size();
    if (frameFaults(frame, FrameKind::Remote).size() < qMin(request, reply))
        return {FrameKind::Remote};
    if (request == reply)
        return {FrameKind::Request, FrameKind::Reply};
    return {request < reply ? FrameKind::Request : FrameKind::Reply};
}
