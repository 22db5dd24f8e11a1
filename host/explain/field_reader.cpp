// SPDX-License-Identifier: MIT
#include "field_reader.h"

QByteArray FieldReader::takeBytes(const QString &name, int size)
{
    const QByteArray bytes = m_frame.mid(m_position, size);
    if (!bytes.isEmpty()) { // "4-5    00 06        length"
        const int shown = 4;
        const QByteArray hex = bytes.left(shown).toHex(' ').toUpper() + (bytes.size() > shown ? " ..." : "");
        m_lastField = QStringLiteral("%1 %2 %3 ")
                          .arg(range(m_position, bytes.size()), -7)
                          .arg(QString::fromLatin1(hex), -15)
                          .arg(name, -14);
        notes.fields << m_lastField.trimmed();
    }
    m_position += bytes.size();
    check(bytes.size() == size, "the frame ends in \"%1\", bytes missing: %2", name, size - bytes.size());
    m_isShort |= bytes.size() < size; // one fault is enough: all later fields are missing too
    return bytes;
}

int FieldReader::take(const char *name, int size)
{
    const QByteArray bytes = takeBytes(asText(name), size);
    quint32 number = 0;
    for (int i = 0; i < size; ++i)
        number = number << 8 | static_cast<quint8>(i < bytes.size() ? bytes.at(i) : 0);
    if (!bytes.isEmpty())
        means("%1", static_cast<int>(number));
    return static_cast<int>(number);
}
