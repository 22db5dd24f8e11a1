// SPDX-License-Identifier: MIT
#include "variable.h"

#include "variable_guess.h"

#include "../../driver/base/modbus_wire.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <vector>

using namespace modbus_driver;

namespace {

/// A word that a variable may hold, and what it stands for.
struct Word
{
    const char *name;
    int width; ///< bytes of the values that a type or order is for; 0 for an area
    int value;
};
using Words = std::vector<Word>;

const Words areas = {
    {"coil", 0, AreaCoils},
    {"input", 0, AreaDiscreteInputs},
    {"irbit", 0, AreaInputRegisterBit},
    {"hrbit", 0, AreaHoldingRegisterBit},
    {"ir", 0, AreaInputRegisters},
    {"hr", 0, AreaHoldingRegisters},
    {"ir32", 0, AreaInputPairs},
    {"hr32", 0, AreaHoldingPairs},
};
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

QString nameOf(const Words &words, int value, int width = 0)
{
    for (const Word &word : words) {
        if (word.value == value && word.width == width)
            return QString::fromLatin1(word.name);
    }
    return QString();
}

/// What is wrong; empty when *value is that of the word, which is `what`.
QString readWord(const QString &word, const QString &what, const Words &words, int width, int *value)
{
    QStringList names;
    for (const Word &known : words) {
        if (known.width != width)
            continue;
        *value = known.value;
        if (word == QLatin1String(known.name))
            return QString();
        names << QString::fromLatin1(known.name);
    }
    return QStringLiteral("\"%1\" is no %2 (%3)").arg(word, what, names.join(QStringLiteral(", ")));
}

enum { NotANumber = -1 };

const int lastAddress = wire::AddressesOfTable - 1;

QString noun(int area)
{
    return isBitArea(area) ? QStringLiteral("bit") : QStringLiteral("register");
}

/// The number, from digits only and from `least` to `most`; else NotANumber.
int decimal(const QString &text, int least, int most)
{
    const auto isDigit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    bool ok = false;
    const int number = text.toInt(&ok);
    ok = ok && std::all_of(text.begin(), text.end(), isDigit) && number >= least && number <= most;
    return ok ? number : NotANumber;
}

/// What is wrong with the address; empty when it was read.
QString readAddress(const QString &text, int base, Variable *variable)
{
    const bool isBit = isBitOfRegister(variable->area);
    const int dot = isBit ? text.indexOf(QLatin1Char('.')) : text.size();
    const int number = decimal(text.left(dot), base, base + lastAddress);
    const int bit = isBit ? decimal(text.mid(dot + 1), 0, BitsOfRegister - 1) : 0;
    if (number == NotANumber || bit == NotANumber || dot < 0)
        return QStringLiteral("%1 takes %2%3 number from %4 to %5%6, not \"%7\"")
            .arg(areaName(variable->area), QLatin1String(isBit ? "REGISTER.BIT, a " : "a "),
                 noun(variable->area), QString::number(base), QString::number(base + lastAddress),
                 QLatin1String(isBit ? " and a bit from 0 to 15" : ""), text);
    variable->addressText = QString::number(number - base);
    variable->address = number - base;
    if (isBit) {
        variable->addressText += QStringLiteral(".%1").arg(bit);
        variable->address = variable->address * BitsOfRegister + bit;
    }
    return QString();
}

QString readCount(const QString &text, Variable *variable)
{
    const int most = wire::AddressesOfTable * BitsOfRegister; // of the largest table, that of register bits
    const int count = decimal(text, 1, most);
    if (count == NotANumber)
        return QStringLiteral("a count is a number from 1 on, not \"%1\"").arg(text);
    variable->count = count;
    return QString();
}

/// The whole run must lie inside the table.
QString checkEnd(const Variable &variable, int base)
{
    const int scale = isBitOfRegister(variable.area) ? BitsOfRegister : 1;
    const int last = (variable.address + variable.driverCount() - 1) / scale;
    if (last <= lastAddress)
        return QString();
    return QStringLiteral("it would end at %1 %2, but %1s end at %3")
        .arg(noun(variable.area))
        .arg(last + base)
        .arg(lastAddress + base);
}

QString readTypeAndOrder(const QStringList &fields, Variable *variable)
{
    int type = static_cast<int>(ValueType::Plain);
    const QString ofArea = QStringLiteral(" of ") + areaName(variable->area);
    QString error;
    if (!fields.value(2).isEmpty())
        error = readWord(fields.at(2), QStringLiteral("type") + ofArea, types, variable->width(), &type);
    if (error.isEmpty() && fields.size() > 3)
        error = readWord(fields.at(3), QStringLiteral("order") + ofArea, orders, variable->width(),
                         &variable->order);
    variable->type = static_cast<ValueType>(type);
    return error;
}

QString readVariable(const QString &text, int base, Variable *variable)
{
    const QString converted = base == 1 ? fromTableNumber(text, base) : QString();
    const QStringList fields = (converted.isEmpty() ? text : converted).split(QLatin1Char(':'));
    if (fields.size() < 2 || fields.size() > 4 || fields.at(1).contains(QLatin1Char('/')))
        return QStringLiteral(
            "write [UNIT/]AREA:ADDRESS[*COUNT][:TYPE[:ORDER]], such as hr:100 or 2/hr32:5*8:float");
    const int slash = fields.at(0).indexOf(QLatin1Char('/'));
    const QString unit = fields.at(0).left(qMax(0, slash));
    variable->unit = slash < 0 ? variable->unit : decimal(unit, 0, 255);
    if (variable->unit == NotANumber)
        return QStringLiteral("a unit is a number from 0 to 255, not \"%1\"").arg(unit);
    const int star = fields.at(1).indexOf(QLatin1Char('*'));
    QString error = readWord(fields.at(0).mid(slash + 1), QStringLiteral("area"), areas, 0, &variable->area);
    if (error.isEmpty())
        error = readAddress(fields.at(1).left(star), base, variable);
    if (error.isEmpty() && star >= 0)
        error = readCount(fields.at(1).mid(star + 1), variable);
    if (error.isEmpty())
        error = readTypeAndOrder(fields, variable);
    return error.isEmpty() ? checkEnd(*variable, base) : error;
}

/// For the end of an error message; empty without a good guess.
QString suggestion(const QString &text, int base)
{
    const QString fromNumber = fromTableNumber(text, base);
    const QString likely = fromNumber.isEmpty() ? likelyVariable(text, base) : fromNumber;
    Variable variable;
    if (!readVariable(likely, base, &variable).isEmpty())
        return QString();
    return QStringLiteral("; did you mean %1?").arg(likely) +
           QLatin1String(fromNumber.isEmpty() ? "" : " (--base 1 takes such addresses)");
}

} // namespace

QString areaName(int area)
{
    const QString name = nameOf(areas, area);
    return name.isEmpty() ? QStringLiteral("?") : name;
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

std::optional<Variable> parseVariable(const QString &text, QString *error, int base)
{
    Variable variable;
    variable.name = text;
    const QString fault = readVariable(text, base, &variable);
    if (fault.isEmpty())
        return variable;
    *error = QStringLiteral("variable \"%1\": %2%3").arg(text, fault, suggestion(text, base));
    return std::nullopt;
}
