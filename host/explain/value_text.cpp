// SPDX-License-Identifier: MIT
#include "value_text.h"

#include "filled.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>
#include <QtCore/QtEndian>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

const int exactDigits = 15;      // without what a scale adds: 0.3, not 0.30000000000000004
const double wholeWithin = 1e-4; // of a step of the raw value

enum { LongestNumber = 32 }; // characters

// The functions below write a number to memory with space for the longest, and return its end.

template <typename... Number> char *writeDigits(char *to, Number... number)
{
    return std::to_chars(to, to + LongestNumber, number...).ptr;
}

/// The bits of a value, between the driver's order and this one; both ways.
quint32 reordered(quint32 bits, int order)
{
    if (order & LowRegisterFirst)
        bits = bits << 16 | bits >> 16;
    if (order & LowByteFirst)
        bits = (bits & 0x00FF00FF) << 8 | (bits >> 8 & 0x00FF00FF);
    return bits;
}

/// Of the value that begins at `bytes`.
quint32 bitsAt(const char *bytes, int width, int order)
{
    const quint32 bits = width == 1   ? static_cast<quint8>(*bytes)
                         : width == 2 ? qFromLittleEndian<quint16>(bytes)
                                      : qFromLittleEndian<quint32>(bytes);
    return reordered(bits, order);
}

void appendBits(QByteArray *bytes, const Variable &variable, quint32 bits)
{
    bits = reordered(bits, variable.order);
    for (int i = 0; i < variable.width(); ++i)
        bytes->append(static_cast<char>(bits >> 8 * i & 0xFF));
}

char *writeWhole(char *to, const Variable &variable, quint32 bits)
{
    const bool isSigned = variable.type == ValueType::Signed;
    const qint64 whole = !isSigned               ? qint64(bits)
                         : variable.width() == 2 ? static_cast<qint16>(bits)
                                                 : static_cast<qint32>(bits);
    return variable.scale == 1
               ? writeDigits(to, whole)
               : writeDigits(to, double(whole) * variable.scale, std::chars_format::general, exactDigits);
}

char *writeHexadecimal(char *to, quint32 bits, int digits)
{
    const QByteArray text = "0x" + QByteArray::number(bits, 16).toUpper().rightJustified(digits, '0');
    return std::copy(text.begin(), text.end(), to);
}

/// The fewest digits that read back to the same bits, always with a point, an exponent, "nan" or "inf".
char *writeFloat(char *to, quint32 bits, double scale)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    if (std::isnan(value))
        value = std::abs(value); // nan, whatever its sign
    char *end = writeDigits(to, value);
    for (int precision = 6; scale != 1 && precision <= exactDigits; ++precision) {
        end = writeDigits(to, value * scale, std::chars_format::general, precision);
        if (static_cast<float>(QByteArray(to, static_cast<int>(end - to)).toDouble() / scale) == value)
            break;
    }
    const bool isWhole = std::all_of(to, end, [](char c) { return c == '-' || std::isdigit(c); });
    return isWhole ? std::copy_n(".0", 2, end) : end;
}

char *writeNumber(char *to, const Variable &variable, quint32 bits)
{
    if (variable.type == ValueType::Float)
        return writeFloat(to, bits, variable.scale);
    return variable.type == ValueType::Hexadecimal ? writeHexadecimal(to, bits, 2 * variable.width())
                                                   : writeWhole(to, variable, bits);
}

/// Without the NULs at the end.
QByteArray escaped(const Variable &variable, const QByteArray &bytes)
{
    QByteArray text, characters;
    for (int i = 0; i < qMin(variable.count, bytes.size() / 2); ++i) {
        const quint32 bits = bitsAt(bytes.constData() + 2 * i, 2, variable.order);
        characters += static_cast<char>(bits >> 8);
        characters += static_cast<char>(bits & 0xFF);
    }
    while (characters.endsWith('\0'))
        characters.chop(1);
    for (const char character : characters) {
        if (character < ' ' || character > '~')
            text += "\\x" + QByteArray(1, character).toHex();
        else
            text += character == '\\' ? QByteArrayLiteral("\\\\") : QByteArray(1, character);
    }
    return text;
}

/// What is wrong; empty when the value was appended.
QString readWhole(const Variable &variable, double raw, bool isBits, QByteArray *bytes)
{
    const bool isSigned = variable.type == ValueType::Signed && !isBits;
    const bool isPlain = variable.type == ValueType::Plain && variable.scale == 1 && variable.width() > 1;
    const double values = variable.width() == 1 ? 2 : std::exp2(8 * variable.width());
    const double least = isSigned || isPlain ? -values / 2 : 0;
    const double most = isSigned ? values / 2 - 1 : values - 1;
    const double whole = std::round(raw);
    const auto text = [](double number) { return QString::number(number, 'g', exactDigits); };
    if (!(std::abs(raw - whole) <= wholeWithin)) // of nan neither is true
        return variable.scale == 1 ? QStringLiteral("it takes whole numbers; fractions are for hr32")
                                   : filled("it takes multiples of %1", text(variable.scale));
    if (whole < least || whole > most) {
        const auto [low, high] = std::minmax({least * variable.scale, most * variable.scale});
        return filled("it takes %1 to %2", text(low), text(high));
    }
    appendBits(bytes, variable, static_cast<quint32>(static_cast<qint64>(whole)));
    return QString();
}

QString readValue(const Variable &variable, const QString &text, QByteArray *bytes)
{
    static const QRegularExpression fraction(QStringLiteral("[.EeNn]")); // n of nan and inf
    const bool isBits = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const bool mayBeFloat = variable.type == ValueType::Plain && variable.scale == 1 && variable.width() == 4;
    const bool isFloat = variable.type == ValueType::Float || (mayBeFloat && text.contains(fraction));
    bool isNumber = true;
    const double raw =
        isBits ? text.mid(2).toUInt(&isNumber, 16) : text.toLower().toDouble(&isNumber) / variable.scale;
    const float single = static_cast<float>(raw);
    if (!isNumber || (isFloat && std::isinf(single) != std::isinf(raw)))
        return filled("it is no number that fits %1", typeName(variable));
    if (isBits || !isFloat)
        return readWhole(variable, raw, isBits, bytes);
    quint32 bits;
    std::memcpy(&bits, &single, sizeof single);
    appendBits(bytes, variable, bits);
    return QString();
}

/// The characters of a text, two to a register.
QString readText(const Variable &variable, const QString &text, QByteArray *bytes)
{
    static const QRegularExpression form(QStringLiteral("^([ -\\[\\]-~]|\\\\\\\\|\\\\x[0-9a-fA-F]{2})*$"));
    if (!form.match(text).hasMatch())
        return QStringLiteral("text is ASCII, with \\xHH for other bytes and \\\\ for a backslash");
    QString escaped = text; // as percent encoding is, but with a backslash
    escaped.replace(QLatin1String("\\\\"), QLatin1String("\\x5c"))
        .replace(QLatin1String("\\x"), QLatin1String("\\"));
    QByteArray characters = QByteArray::fromPercentEncoding(escaped.toLatin1(), '\\');
    if (characters.size() > 2 * variable.count)
        return filled("it has %1 bytes, but there is space for %2", characters.size(), 2 * variable.count);
    characters = characters.leftJustified(2 * variable.count, '\0');
    for (int i = 0; i < characters.size(); i += 2)
        appendBits(bytes, variable, quint32(quint8(characters[i])) << 8 | quint8(characters[i + 1]));
    return QString();
}

} // namespace

QByteArray valuesText(const Variable &variable, const QByteArray &bytes, char separator)
{
    if (variable.type == ValueType::Text)
        return escaped(variable, bytes);
    const int width = variable.width();
    const int count = qMin(variable.count, bytes.size() / width);
    QByteArray text(count * (LongestNumber + 1), Qt::Uninitialized);
    char *end = text.data();
    for (int i = 0; i < count; ++i) {
        end = writeNumber(end, variable, bitsAt(bytes.constData() + i * width, width, variable.order));
        *end++ = separator;
    }
    text.truncate(static_cast<int>(end - text.constData()));
    text.chop(1);
    return text;
}

QString valueText(const Variable &variable, const QByteArray &bytes)
{
    const QByteArray text = valuesText(variable, bytes, ' ');
    return QString::fromLatin1(text.constData(), text.size());
}

std::optional<QByteArray> parseValues(const Variable &variable, const QString &text, QString *error)
{
    const bool isText = variable.type == ValueType::Text;
    static const QRegularExpression separators(QStringLiteral("\\s*,\\s*|\\s+"));
    const QStringList words = isText ? QStringList(text) : text.trimmed().split(separators);
    if (!isText && words.size() != variable.count) {
        *error = filled("%1 takes %2 with commas or blanks between them, not %3%4", variable.name,
                        counted(variable.count, "value"), words.size(),
                        variable.count == 1 && words.size() == 2 ? "; decimals follow a point" : "");
        return std::nullopt;
    }
    QByteArray bytes;
    for (const QString &word : words) {
        const QString fault = isText ? readText(variable, word, &bytes) : readValue(variable, word, &bytes);
        if (!fault.isEmpty()) {
            *error = filled("value \"%1\" for %2: %3", word, variable.name, fault);
            return std::nullopt;
        }
    }
    return bytes;
}
