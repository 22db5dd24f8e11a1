// SPDX-License-Identifier: MIT
/// \file
/// The fields and faults of a frame: found by the dissectors of both frame formats, printed by frame_text.cpp. Plain data, no state; any thread.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

struct FrameField
{
    int offset = 0; ///< of the first byte
    QByteArray bytes;
    QString name;
    QString meaning;
};

struct FrameDissection
{
    QString summary; ///< one line, without the faults
    QList<FrameField> fields;
    QStringList faults; ///< what a strict receiver would reject, most important first
};

/// Walks over a frame and notes its fields. Reading beyond the end gives zeros and one fault.
class FieldReader
{
public:
    FieldReader(const QByteArray &frame, FrameDissection *dissection) : m_frame(frame), m_notes(dissection) {}

    /// The next `size` bytes (at most 4) as a number, high byte first; noted with the number as meaning.
    int take(const char *name, int size);
    /// The next `size` bytes, as far as there are any; noted.
    QByteArray takeBytes(const QString &name, int size);
    /// Replaces the meaning of the field that was noted last.
    void means(const QString &meaning);
    void fault(const QString &text) { m_notes->faults << text; }
    /// Notes a fault unless `isFine`; returns isFine.
    bool check(bool isFine, const QString &otherwise);

    int left() const { return m_frame.size() - m_position; }
    bool isAtEnd() const { return left() <= 0; }

private:
    const QByteArray m_frame;
    FrameDissection *m_notes;
    int m_position = 0;
    bool m_isShort = false;
};

/// A Modbus TCP frame, as a request or as a reply.
FrameDissection dissectModbus(const QByteArray &frame, bool isReply);

/// A request in the driver's own compact form.
FrameDissection dissectRemote(const QByteArray &frame);

/// "0x1234 0x5678", at most the first eight registers of the wire's bytes.
QString registersText(const QByteArray &data);
/// "1 0 1 1", at most the first 16 of `count` bits, lowest bit of the first byte first.
QString bitsText(const QByteArray &data, int count);
