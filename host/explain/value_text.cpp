// SPDX-License-Identifier: MIT
#include "value_text.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

const int exactDigits = 15;      // a double holds any number of so many
const double wholeWithin = 1e-4; // of a step of the raw value

template <typename... Number> QByteArray digits(Number... number)
{
    char text[32];
    return QByteArray(text, static_cast<int>(std::to_chars(text, text + sizeof text, number...).ptr - text));
}

/// A number with what a scale adds rounded off: 0.3, not 0.30000000000000004.
QByteArray scaledDigits(double number)
{
    return digits(number, std::chars_format::general, exactDigits);
}

/// The number that is all of the text; false when it is none.
template <typename Number, typename... Base>
bool readNumber(const QString &text, Number *number, Base... base)
{
    const QByteArray latin1 = text.toLatin1();
    const char *const first = latin1.constData() + (latin1.startsWith('+') ? 1 : 0);
    const char *const end = latin1.constData() + latin1.size();
    // Not QString::toFloat: it refuses the largest floats as they are shown.
    const std::from_chars_result read = std::from_chars(first, end, *number, base...);
    return read.ec == std::errc() && read.ptr == end;
}

quint32 bitsAt(const Variable &variable, const QByteArray &bytes, int index)
{
    const int width = variable.width();
    quint32 bits = 0;
    for (int i = width - 1; i >= 0; --i)
        bits = bits << 8 | static_cast<quint8>(bytes.at(index * width + i));
    return reordered(bits, variable.order);
}

void appendBits(QByteArray *bytes, const Variable &variable, quint32 bits)
{
    bits = reordered(bits, variable.order);
    for (int i = 0; i < variable.width(); ++i)
        bytes->append(static_cast<char>(bits >> 8 * i & 0xFF));
}

QByteArray wholeDigits(const Variable &variable, quint32 bits)
{
    const bool isSigned = variable.type == ValueType::Signed;
    const qint64 whole = !isSigned               ? qint64(bits)
                         : variable.width() == 2 ? static_cast<qint16>(bits)
                                                 : static_cast<qint32>(bits);
    return variable.scale == 1 ? digits(whole) : scaledDigits(double(whole) * variable.scale);
}

/// The fewest digits that read back to the same bits.
QByteArray floatDigits(quint32 bits, double scale)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    if (std::isnan(value))
        return QByteArrayLiteral("nan"); // whatever its sign
    QByteArray text = digits(value);
    for (int precision = 6; scale != 1 && precision <= exactDigits; ++precision) {
        text = digits(value * scale, std::chars_format::general, precision);
        if (static_cast<float>(text.toDouble() / scale) == value)
            break;
    }
    const bool isWhole =
        std::all_of(text.begin(), text.end(), [](char c) { return c == '-' || std::isdigit(c); });
    return isWhole ? text + ".0" : text;
}

QByteArray hexadecimal(quint32 bits, int width)
{
    return "0x" + QByteArray::number(bits, 16).toUpper().rightJustified(2 * width, '0');
}

/// Without the NULs at the end.
void appendText(QByteArray *text, const Variable &variable, const QByteArray &bytes)
{
    QByteArray characters;
    for (int i = 0; i < qMin(variable.count, bytes.size() / 2); ++i) {
        const quint32 bits = bitsAt(variable, bytes, i);
        characters += static_cast<char>(bits >> 8);
        characters += static_cast<char>(bits & 0xFF);
    }
    while (characters.endsWith('\0'))
        characters.chop(1);
    for (const char character : characters) {
        if (character < ' ' || character > '~')
            *text += "\\x" + QByteArray(1, character).toHex();
        else
            *text += character == '\\' ? QByteArrayLiteral("\\\\") : QByteArray(1, character);
    }
}

bool isHexadecimal(const QString &text)
{
    return text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
}

bool isFraction(const QString &text)
{
    const bool isNamed = text.contains(QLatin1String("nan")) || text.contains(QLatin1String("inf"));
    return isNamed || text.contains(QLatin1Char('.')) || text.contains(QLatin1Char('e'), Qt::CaseInsensitive);
}

QString kindOf(const Variable &variable)
{
    const int width = variable.width();
    return width == 1   ? QStringLiteral("a bit")
           : width == 2 ? QStringLiteral("a register")
                        : QStringLiteral("a 32-bit value");
}

QString noNumber(const Variable &variable)
{
    return QStringLiteral("it is no number that %1 holds").arg(kindOf(variable));
}

/// What is wrong; empty when *bits holds the value.
QString readFloat(const Variable &variable, const QString &text, quint32 *bits)
{
    float value = 0;
    double shown = 0;
    bool isNumber = readNumber(text, &value);
    if (variable.scale != 1) {
        isNumber = readNumber(text, &shown);
        value = static_cast<float>(shown / variable.scale);
        isNumber = isNumber && std::isinf(value) == std::isinf(shown);
    }
    std::memcpy(bits, &value, sizeof value);
    return isNumber ? QString() : noNumber(variable);
}

QString checkRange(const Variable &variable, double whole, bool isBits)
{
    const bool isSigned = variable.type == ValueType::Signed && !isBits;
    const bool isPlain = variable.type == ValueType::Plain && variable.scale == 1 && variable.width() > 1;
    const double values = variable.width() == 1 ? 2 : std::exp2(8 * variable.width());
    const double least = isSigned || isPlain ? -values / 2 : 0;
    const double most = isSigned ? values / 2 - 1 : values - 1;
    if (whole >= least && whole <= most)
        return QString();
    const auto [low, high] = std::minmax({least * variable.scale, most * variable.scale});
    const auto text = [](double number) { return QString::fromLatin1(scaledDigits(number)); };
    return QStringLiteral("%1 holds %2 to %3").arg(kindOf(variable), text(low), text(high));
}

QString readWhole(const Variable &variable, const QString &text, quint32 *bits)
{
    double shown = 0;
    const bool isBits = isHexadecimal(text);
    if (isBits ? !readNumber(text.mid(2), bits, 16) : !readNumber(text, &shown))
        return noNumber(variable);
    const double raw = isBits ? *bits : shown / variable.scale;
    const double whole = std::round(raw);
    if (!(std::abs(raw - whole) <= wholeWithin)) // of nan neither is true
        return variable.scale == 1
                   ? QStringLiteral("%1 holds whole numbers; fractions are for hr32").arg(kindOf(variable))
                   : QStringLiteral("it is no multiple of %1").arg(variable.scale);
    const QString fault = checkRange(variable, whole, isBits);
    if (fault.isEmpty())
        *bits = static_cast<quint32>(static_cast<qint64>(whole));
    return fault;
}

QString readValue(const Variable &variable, const QString &text, quint32 *bits)
{
    const bool isPlainFloat =
        variable.type == ValueType::Plain && variable.scale == 1 && variable.width() == 4 && isFraction(text);
    const bool isFloat = variable.type == ValueType::Float || isPlainFloat;
    return isFloat && !isHexadecimal(text) ? readFloat(variable, text, bits)
                                           : readWhole(variable, text, bits);
}

/// The characters of a text, two to a register.
QString readText(const Variable &variable, const QString &text, QByteArray *bytes)
{
    QByteArray characters;
    for (int i = 0; i < text.size(); ++i) {
        const char16_t character = text.at(i).unicode();
        const QByteArray hex = text.mid(i + 2, 2).toLatin1().toLower();
        if (character < ' ' || character > '~')
            return QStringLiteral("characters other than ASCII's are written \\xHH");
        if (character != '\\') {
            characters += static_cast<char>(character);
        } else if (text.mid(i + 1, 1) == QLatin1String("\\")) {
            characters += '\\';
            i += 1;
        } else if (text.mid(i + 1, 1) == QLatin1String("x") && hex.size() == 2 &&
                   QByteArray::fromHex(hex).toHex() == hex) {
            characters += QByteArray::fromHex(hex);
            i += 3;
        } else {
            return QStringLiteral("behind \\ comes x and two hexadecimal digits, or another \\");
        }
    }
    if (characters.size() > 2 * variable.count)
        return QStringLiteral("it has %1 characters, but %2 holds %3")
            .arg(QString::number(characters.size()), variable.name, QString::number(2 * variable.count));
    characters = characters.leftJustified(2 * variable.count, '\0');
    for (int i = 0; i < characters.size(); i += 2)
        appendBits(bytes, variable, quint32(quint8(characters.at(i))) << 8 | quint8(characters.at(i + 1)));
    return QString();
}

} // namespace

quint32 reordered(quint32 bits, int order)
{
    if (order & LowRegisterFirst)
        bits = bits << 16 | bits >> 16;
    if (order & LowByteFirst)
        bits = (bits & 0x00FF00FF) << 8 | (bits >> 8 & 0x00FF00FF);
    return bits;
}

int valueCount(const Variable &variable, const QByteArray &bytes)
{
    const int whole = qMin(variable.count, bytes.size() / variable.width());
    return variable.type == ValueType::Text ? qMin(1, whole) : whole;
}

void appendValue(QByteArray *text, const Variable &variable, const QByteArray &bytes, int index)
{
    if (variable.type == ValueType::Text)
        return appendText(text, variable, bytes);
    const quint32 bits = bitsAt(variable, bytes, index);
    *text += variable.type == ValueType::Float         ? floatDigits(bits, variable.scale)
             : variable.type == ValueType::Hexadecimal ? hexadecimal(bits, variable.width())
                                                       : wholeDigits(variable, bits);
}

QString valueText(const Variable &variable, const QByteArray &bytes, int longest)
{
    QByteArray text;
    for (int i = 0; i < valueCount(variable, bytes) && text.size() <= longest; ++i) {
        if (i > 0)
            text += ' ';
        appendValue(&text, variable, bytes, i);
    }
    return QString::fromLatin1(text);
}

QString floatText(quint32 bits)
{
    return QString::fromLatin1(floatDigits(bits, 1));
}

std::optional<QByteArray> parseValues(const Variable &variable, const QString &text, QString *error)
{
    const bool isText = variable.type == ValueType::Text;
    const QStringList words = isText                            ? QStringList(text)
                              : text.contains(QLatin1Char(',')) ? text.split(QLatin1Char(','))
                                                                : text.simplified().split(QLatin1Char(' '));
    if (!isText && words.size() != variable.count) {
        *error = QStringLiteral("%1 takes %2 values with commas or blanks between them, not %3")
                     .arg(variable.name, QString::number(variable.count), QString::number(words.size()));
        return std::nullopt;
    }
    QByteArray bytes;
    for (const QString &word : words) {
        quint32 bits = 0;
        const QString fault =
            isText ? readText(variable, word, &bytes) : readValue(variable, word.trimmed(), &bits);
        if (!fault.isEmpty()) {
            *error = QStringLiteral("value \"%1\" for %2: %3").arg(word.trimmed(), variable.name, fault);
            return std::nullopt;
        }
        if (!isText)
            appendBits(&bytes, variable, bits);
    }
    return bytes;
}
