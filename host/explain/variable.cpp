// SPDX-License-Identifier: MIT
#include "variable.h"

#include "../../driver/base/modbus_wire.h"

#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <algorithm>
#include <vector>

using namespace modbus_driver;

namespace {

struct AreaFacts
{
    const char *name;
    int tableDigit; ///< leads the numbers of manuals that count from 1: 400001 is holding register 0
    int bitArea;    ///< the area of single bits of its registers; NoArea when it has no registers of its own
};

enum { NoArea = -1 };

const AreaFacts areas[] = {
    {"coil", 0, NoArea},
    {"input", 1, NoArea},
    {"irbit", 3, NoArea},
    {"hrbit", 4, NoArea},
    {"ir", 3, AreaInputRegisterBit},
    {"hr", 4, AreaHoldingRegisterBit},
    {"ir32", 3, AreaInputRegisterBit},
    {"hr32", 4, AreaHoldingRegisterBit},
};
const int areaCount = sizeof areas / sizeof areas[0];

/// A type or an order, of values of so many bytes.
struct Word
{
    const char *name;
    int width;
    int value;
};
using Words = std::vector<Word>;

const Words types = {
    {"bit", 1, int(ValueType::Plain)},   {"u16", 2, int(ValueType::Unsigned)},
    {"s16", 2, int(ValueType::Signed)},  {"hex", 2, int(ValueType::Hexadecimal)},
    {"text", 2, int(ValueType::Text)},   {"u32", 4, int(ValueType::Unsigned)},
    {"s32", 4, int(ValueType::Signed)},  {"hex", 4, int(ValueType::Hexadecimal)},
    {"float", 4, int(ValueType::Float)},
};
const Words orders = {
    {"AB", 2, HighFirst},          {"BA", 2, LowByteFirst},   {"ABCD", 4, HighFirst},
    {"CDAB", 4, LowRegisterFirst}, {"BADC", 4, LowByteFirst}, {"DCBA", 4, LowRegisterFirst | LowByteFirst},
};

QString nameOf(const Words &words, int value, int width)
{
    for (const Word &word : words) {
        if (word.value == value && word.width == width)
            return QString::fromLatin1(word.name);
    }
    return QString();
}

const int lastAddress = wire::AddressesOfTable - 1;
const qint64 longestFile = 1 << 20; // bytes

QString noun(int area)
{
    return isBitArea(area) ? QStringLiteral("bit") : QStringLiteral("register");
}

enum { NotANumber = -1 };

/// The number, from digits only and at most `most`; else NotANumber.
int decimal(const QString &text, int most)
{
    const auto isDigit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    bool ok = false;
    const int number = text.toInt(&ok);
    if (!ok || !std::all_of(text.begin(), text.end(), isDigit) || number > most)
        return NotANumber;
    return number;
}

int areaOf(const QString &name)
{
    for (int area = 0; area < areaCount; ++area) {
        if (name == areaName(area))
            return area;
    }
    return NoArea;
}

QString suggestion(const QString &variable)
{
    return QStringLiteral("; did you mean %1?").arg(variable);
}

/// A guess at the address that was meant, for the end of an error message; empty when there is none.
QString betterAddress(int area, const QString &text)
{
    const QString name = areaName(area);
    const QStringList parts = text.split(QLatin1Char('.'));
    const bool isBit = parts.size() == 2 && decimal(parts[0], lastAddress) != NotANumber &&
                       decimal(parts[1], BitsOfRegister - 1) != NotANumber;
    if (isBit && areas[area].bitArea != NoArea)
        return suggestion(QStringLiteral("%1:%2").arg(areaName(areas[area].bitArea), text));
    bool isHexadecimal = false;
    const int number = text.startsWith(QLatin1String("0x")) ? text.mid(2).toInt(&isHexadecimal, 16) : 0;
    if (isHexadecimal && number >= 0 && number <= lastAddress)
        return suggestion(QStringLiteral("%1:%2").arg(name).arg(number));
    const int base = 100000 * areas[area].tableDigit + 1;
    const int counted = decimal(text, base + lastAddress);
    if (base > 1 && counted >= base)
        return suggestion(QStringLiteral("%1:%2").arg(name).arg(counted - base));
    return QString();
}

/// What is wrong with the address; empty when it was read.
QString readPlainAddress(const QString &text, Variable *variable)
{
    const int number = decimal(text, lastAddress);
    if (number == NotANumber)
        return QStringLiteral("%1 takes a %2 number from 0 to 65535, not \"%3\"%4")
            .arg(areaName(variable->area), noun(variable->area), text, betterAddress(variable->area, text));
    variable->address = number;
    variable->addressText = QString::number(number);
    return QString();
}

QString readBitAddress(const QString &text, Variable *variable)
{
    const QString name = areaName(variable->area);
    const QStringList parts = text.split(QLatin1Char('.'));
    const int number = decimal(parts[0], lastAddress);
    if (number != NotANumber && parts.size() == 1)
        return QStringLiteral("%1 takes REGISTER.BIT%2")
            .arg(name, suggestion(QStringLiteral("%1:%2.0").arg(name, text)));
    const int bit = parts.size() == 2 ? decimal(parts[1], BitsOfRegister - 1) : NotANumber;
    if (number == NotANumber || bit == NotANumber)
        return QStringLiteral(
                   "%1 takes REGISTER.BIT, a register from 0 to 65535 and a bit from 0 to 15, not \"%2\"")
            .arg(name, text);
    variable->address = number * BitsOfRegister + bit;
    variable->addressText = QStringLiteral("%1.%2").arg(number).arg(bit);
    return QString();
}

QString readAddress(const QString &text, Variable *variable)
{
    return isBitOfRegister(variable->area) ? readBitAddress(text, variable)
                                           : readPlainAddress(text, variable);
}

QString readCount(const QString &text, Variable *variable)
{
    const int most = wire::AddressesOfTable * BitsOfRegister; // of the largest table, that of register bits
    const int count = decimal(text, most);
    if (count < 1)
        return QStringLiteral("a count is a number from 1 on, not \"%1\"").arg(text);
    variable->count = count;
    return QString();
}

/// The whole run must lie inside the table.
QString checkEnd(const Variable &variable)
{
    const int scale = isBitOfRegister(variable.area) ? BitsOfRegister : 1;
    const int last = (variable.address + variable.driverCount() - 1) / scale;
    if (last <= lastAddress)
        return QString();
    return QStringLiteral("it would end at %1 %2, but %1s end at 65535").arg(noun(variable.area)).arg(last);
}

/// *value is the named one among those of the variable's width; what is wrong, else.
QString readWord(const QString &word, const char *what, const Words &words, const Variable &variable,
                 int *value)
{
    QStringList names;
    for (const Word &known : words) {
        if (known.width != variable.width())
            continue;
        names << QString::fromLatin1(known.name);
        *value = known.value;
        if (word == names.last())
            return QString();
    }
    return QStringLiteral("\"%1\" is no %2 of %3 (%2s: %4)")
        .arg(word, QLatin1String(what), areaName(variable.area),
             names.isEmpty() ? QStringLiteral("none") : names.join(QStringLiteral(", ")));
}

QString readTypeAndOrder(const QStringList &fields, Variable *variable)
{
    int type = 0;
    QString error;
    if (fields.size() > 2)
        error = readWord(fields.at(2), "type", types, *variable, &type);
    if (error.isEmpty() && fields.size() > 3)
        error = readWord(fields.at(3), "order", orders, *variable, &variable->order);
    variable->type = static_cast<ValueType>(type);
    return error;
}

QString readVariable(const QString &text, Variable *variable)
{
    const QStringList fields = text.split(QLatin1Char(':'));
    if (fields.size() < 2 || fields.size() > 4 || fields.at(1).contains(QLatin1Char('/')))
        return QStringLiteral(
            "write [UNIT/]AREA:ADDRESS[*COUNT][:TYPE[:ORDER]], such as hr:100 or 2/hr32:5*8:float");

    const int slash = fields.at(0).indexOf(QLatin1Char('/'));
    const QString unit = fields.at(0).left(qMax(0, slash));
    const int unitNumber = slash < 0 ? variable->unit : decimal(unit, 255);
    if (unitNumber == NotANumber)
        return QStringLiteral("a unit is a number from 0 to 255, not \"%1\"").arg(unit);
    variable->unit = unitNumber;

    const QString area = fields.at(0).mid(slash + 1);
    variable->area = areaOf(area);
    if (variable->area == NoArea)
        return QStringLiteral(
                   "there is no area \"%1\"; the areas are coil, input, irbit, hrbit, ir, hr, ir32, hr32")
            .arg(area);

    const int star = fields.at(1).indexOf(QLatin1Char('*'));
    QString error = readAddress(fields.at(1).left(star), variable);
    if (error.isEmpty() && star >= 0)
        error = readCount(fields.at(1).mid(star + 1), variable);
    if (error.isEmpty())
        error = readTypeAndOrder(fields, variable);
    return error.isEmpty() ? checkEnd(*variable) : error;
}

bool isControl(QChar character)
{
    return character.category() == QChar::Other_Control;
}

/// A variable, then its name; false, with *error, when the variable is wrong.
bool readLine(const QString &line, QList<Variable> *variables, QString *error)
{
    const QString text = line.section(QLatin1Char('#'), 0, 0).simplified();
    if (text.isEmpty())
        return true;
    std::optional<Variable> variable = parseVariable(text.section(QLatin1Char(' '), 0, 0), error);
    if (!variable)
        return false;
    const QString name = text.section(QLatin1Char(' '), 1);
    if (std::any_of(name.begin(), name.end(), isControl)) {
        *error = QStringLiteral("the name holds a control character");
        return false;
    }
    if (!name.isEmpty())
        variable->name = name;
    variables->append(*variable);
    return true;
}

} // namespace

QString areaName(int area)
{
    return area >= 0 && area < areaCount ? QString::fromLatin1(areas[area].name) : QStringLiteral("?");
}

QString typeName(const Variable &variable)
{
    const int width = variable.width();
    const bool isPlain = variable.type == ValueType::Plain && width > 1;
    return nameOf(types, static_cast<int>(isPlain ? ValueType::Unsigned : variable.type), width);
}

QString orderName(int order, int width)
{
    return nameOf(orders, order, width);
}

std::optional<Variable> parseVariable(const QString &text, QString *error)
{
    Variable variable;
    variable.name = text;
    const QString fault = readVariable(text, &variable);
    if (fault.isEmpty())
        return variable;
    *error = QStringLiteral("variable \"%1\": %2").arg(text, fault);
    return std::nullopt;
}

std::optional<QList<Variable>> readVariableFile(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    const QByteArray content = file.read(longestFile + 1);
    if (content.size() > longestFile) {
        *error = QStringLiteral("%1 is larger than a list of variables may be (1 MiB)").arg(path);
        return std::nullopt;
    }
    QList<Variable> variables;
    const QStringList lines = QString::fromUtf8(content.constData(), content.size()).split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i) {
        if (readLine(lines.at(i), &variables, error))
            continue;
        *error = QStringLiteral("%1:%2: %3").arg(path, QString::number(i + 1), *error);
        return std::nullopt;
    }
    if (variables.isEmpty()) {
        *error = QStringLiteral("%1 holds no variable").arg(path);
        return std::nullopt;
    }
    return variables;
}
