// SPDX-License-Identifier: MIT
#include "value_text.h"

#include <QtCore/QStringList>
#include <QtCore/QtEndian>

#include <charconv>
#include <cmath>
#include <cstring>

using namespace modbus_driver;

namespace {

/// Bytes of one value in the driver's host-side layout: a bit, a register or a 32-bit value.
int widthOf(const Variable &variable)
{
    if (isBitArea(variable.area) || isBitOfRegister(variable.area))
        return 1;
    return isPairArea(variable.area) ? 4 : 2;
}

/// `width` bytes, least significant first.
quint32 numberAt(const QByteArray &bytes, int from, int width)
{
    quint32 number = 0;
    for (int i = width - 1; i >= 0; --i)
        number = number << 8 | static_cast<quint8>(bytes.at(from + i));
    return number;
}

void append(QByteArray *bytes, quint32 number, int width)
{
    for (int i = 0; i < width; ++i)
        bytes->append(static_cast<char>(number >> 8 * i & 0xFF));
}

QString signedText(quint32 number, int width)
{
    return width == 2 ? QString::number(static_cast<qint16>(number))
                      : QString::number(static_cast<qint32>(number));
}

QString oneValue(quint32 number, int width, ValueFormat format)
{
    const bool isBit = width == 1;
    if (isBit || format == ValueFormat::Decimal || (format == ValueFormat::Float && width != 4))
        return QString::number(number);
    if (format == ValueFormat::Signed)
        return signedText(number, width);
    if (format == ValueFormat::Float)
        return floatText(number);
    return QStringLiteral("0x%1").arg(QString::number(number, 16).toUpper(), 2 * width, QLatin1Char('0'));
}

bool isFraction(const QString &text)
{
    const bool isHexadecimal = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const bool isNamed = text.contains(QLatin1String("nan")) || text.contains(QLatin1String("inf"));
    return !isHexadecimal && (isNamed || text.contains(QLatin1Char('.')) ||
                              text.contains(QLatin1Char('e'), Qt::CaseInsensitive));
}

QString kindOf(int width)
{
    return width == 1   ? QStringLiteral("a bit")
           : width == 2 ? QStringLiteral("a register")
                        : QStringLiteral("a 32-bit value");
}

/// What is wrong; empty when *number holds the value's bits.
QString readFraction(const QString &text, int width, quint32 *number)
{
    const QByteArray digits = text.toLatin1();
    const char *first = digits.constData() + (digits.startsWith('+') ? 1 : 0),
               *end = digits.constData() + digits.size();
    float value = 0;
    // Not QString::toFloat: it refuses the largest floats as they are shown.
    const std::from_chars_result read = std::from_chars(first, end, value);
    if (read.ec != std::errc() || read.ptr != end)
        return QStringLiteral("it is no number that %1 holds").arg(kindOf(width));
    if (width != 4)
        return QStringLiteral("%1 holds whole numbers; fractions are for hr32").arg(kindOf(width));
    std::memcpy(number, &value, sizeof value);
    return QString();
}

QString readWhole(const QString &text, int width, quint32 *number)
{
    const bool isHexadecimal = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    bool ok = false;
    // Unsigned digits behind 0x: "0x-1" is no number.
    const qint64 value = isHexadecimal ? qint64(text.mid(2).toUInt(&ok, 16)) : text.toLongLong(&ok, 10);
    if (!ok)
        return QStringLiteral("it is no whole number, decimal or 0x hexadecimal, that %1 holds")
            .arg(kindOf(width));
    const qint64 most = width == 1 ? 1 : (qint64(1) << 8 * width) - 1;
    const qint64 least = width == 1 ? 0 : -(most + 1) / 2;
    if (value < least || value > most)
        return QStringLiteral("%1 holds %2 to %3").arg(kindOf(width)).arg(least).arg(most);
    *number = static_cast<quint32>(value);
    return QString();
}

} // namespace

QString floatText(quint32 bits)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    if (std::isnan(value))
        return QStringLiteral("nan"); // whatever its sign
    char text[32];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
    const QString shortest = QString::fromLatin1(text, static_cast<int>(end.ptr - text));
    return isFraction(shortest) ? shortest : shortest + QStringLiteral(".0");
}

QString valueText(const Variable &variable, const QByteArray &bytes, ValueFormat format, int longest)
{
    const int width = widthOf(variable);
    QString text;
    for (int i = 0; i < variable.count && (i + 1) * width <= bytes.size() && text.size() <= longest; ++i) {
        if (i > 0)
            text += QLatin1Char(' ');
        text += oneValue(numberAt(bytes, i * width, width), width, format);
    }
    return text;
}

std::optional<QByteArray> parseValues(const Variable &variable, const QString &text, QString *error)
{
    const int width = widthOf(variable);
    const QStringList words = text.split(QLatin1Char(','));
    if (words.size() != variable.count) {
        *error = QStringLiteral("%1 takes %2 values with commas between them, not %3")
                     .arg(variable.name, QString::number(variable.count), QString::number(words.size()));
        return std::nullopt;
    }
    QByteArray bytes;
    for (const QString &word : words) {
        const QString value = word.trimmed();
        quint32 number = 0;
        const QString fault =
            isFraction(value) ? readFraction(value, width, &number) : readWhole(value, width, &number);
        if (!fault.isEmpty()) {
            *error = QStringLiteral("value \"%1\" for %2: %3").arg(value, variable.name, fault);
            return std::nullopt;
        }
        append(&bytes, number, width);
    }
    return bytes;
}
