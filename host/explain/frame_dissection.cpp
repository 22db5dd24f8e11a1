// SPDX-License-Identifier: MIT
#include "frame_dissection.h"

#include <QtCore/QtEndian>

namespace {
const int mostRegisters = 8;
const int mostBits = 16;
} // namespace

QByteArray FieldReader::takeBytes(const QString &name, int size)
{
    const QByteArray bytes = m_frame.mid(m_position, size);
    if (!bytes.isEmpty())
        m_notes->fields << FrameField{m_position, bytes, name, QString()};
    m_position += bytes.size();
    if (bytes.size() < size && !m_isShort) {
        m_isShort = true; // one fault is enough: all later fields are missing too
        fault(
            QStringLiteral("the frame ends in \"%1\", bytes missing: %2").arg(name).arg(size - bytes.size()));
    }
    return bytes;
}

int FieldReader::take(const char *name, int size)
{
    const QByteArray bytes = takeBytes(QString::fromLatin1(name), size);
    quint32 number = 0;
    for (int i = 0; i < size; ++i)
        number = number << 8 | static_cast<quint8>(i < bytes.size() ? bytes.at(i) : 0);
    if (!bytes.isEmpty())
        means(QString::number(static_cast<int>(number)));
    return static_cast<int>(number);
}

void FieldReader::means(const QString &meaning)
{
    if (!m_isShort)
        m_notes->fields.last().meaning = meaning;
}

bool FieldReader::check(bool isFine, const QString &otherwise)
{
    if (!isFine && !m_isShort)
        fault(otherwise);
    return isFine;
}

QString registersText(const QByteArray &data)
{
    QStringList values;
    for (int i = 0; i + 1 < data.size() && values.size() < mostRegisters; i += 2)
        values << QStringLiteral("0x%1").arg(QString::fromLatin1(data.mid(i, 2).toHex().toUpper()));
    if (data.size() / 2 > mostRegisters)
        values << QStringLiteral("...");
    return values.join(QLatin1Char(' '));
}

QString bitsText(const QByteArray &data, int count)
{
    QStringList bits;
    for (int i = 0; i < count && i < 8 * data.size() && i < mostBits; ++i)
        bits << QString::number(data.at(i / 8) >> i % 8 & 1);
    if (count > mostBits)
        bits << QStringLiteral("...");
    return bits.join(QLatin1Char(' '));
}
