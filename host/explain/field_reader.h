// SPDX-License-Identifier: MIT
/// \file
/// Walks over a frame field by field, for both frame formats. One object for one frame; any thread.

#pragma once

#include "filled.h"
#include "frame_text.h"

/// Notes what it takes. Reading beyond the end gives zeros and one fault.
class FieldReader
{
public:
    explicit FieldReader(const QByteArray &frame) : m_frame(frame) {}

    FrameText notes;

    /// The next `size` bytes (at most 4) as a number, high byte first; noted with the number as meaning.
    int take(const char *name, int size);
    /// The next `size` bytes, as far as there are any; noted.
    QByteArray takeBytes(const QString &name, int size);
    /// Replaces the meaning of the field that was noted last.
    template <typename... Arguments> void means(const char *format, const Arguments &...arguments)
    {
        if (!m_isShort)
            notes.fields.last() = m_lastField + filled(format, arguments...);
    }
    /// Notes a fault unless `isFine`.
    template <typename... Arguments>
    void check(bool isFine, const char *otherwise, const Arguments &...arguments)
    {
        if (!isFine && !m_isShort)
            notes.faults << filled(otherwise, arguments...);
    }

    int left() const { return m_frame.size() - m_position; }
    bool isAtEnd() const { return left() <= 0; }

private:
    const QByteArray m_frame;
    int m_position = 0;
    bool m_isShort = false;
    QString m_lastField; ///< its line without the meaning
};

/// A Modbus TCP frame, as a request or as a reply.
FrameText modbusText(const QByteArray &frame, bool isReply);

/// A request in the driver's own compact form.
FrameText remoteText(const QByteArray &frame);
