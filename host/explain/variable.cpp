// SPDX-License-Identifier: MIT
#include "variable.h"

#include "filled.h"
#include "variable_guess.h"

#include "../../driver/base/modbus_wire.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

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
    return filled("\"%1\" is no %2 (%3)", word, what, names.join(QStringLiteral(", ")));
}

enum { NotANumber = -1 };

const int lastAddress = wire::AddressesOfTable - 1;
const int mostBits = wire::AddressesOfTable * BitsOfRegister; // of the largest table, that of register bits

const char *noun(int area)
{
    return isBitArea(area) ? "bit" : "register";
}

/// The number, from digits only and from `least` to `most`; else NotANumber.
int decimal(const QString &text, int least, int most)
{
    static const QRegularExpression digits(QStringLiteral("\\A\\d{1,9}\\z"));
    const int number = digits.match(text).hasMatch() ? text.toInt() : NotANumber;
    return number >= least && number <= most ? number : NotANumber;
}

/// What is wrong with the address; empty when it was read.
QString readAddress(const QString &text, int base, Variable *variable)
{
    const bool isBit = isBitOfRegister(variable->area);
    const int dot = isBit ? text.indexOf(QLatin1Char('.')) : text.size();
    const int number = decimal(text.left(dot), base, base + lastAddress);
    const int bit = isBit ? decimal(text.mid(dot + 1), 0, BitsOfRegister - 1) : 0;
    if (number == NotANumber || bit == NotANumber || dot < 0)
        return filled("%1 takes %2%3 number from %4 to %5%6, not \"%7\"", areaName(variable->area),
                      isBit ? "REGISTER.BIT, a " : "a ", noun(variable->area), base, base + lastAddress,
                      isBit ? " and a bit from 0 to 15" : "", text);
    variable->address = isBit ? (number - base) * BitsOfRegister + bit : number - base;
    return QString();
}

/// The whole run must lie inside the table.
QString checkEnd(const Variable &variable, int base)
{
    const int scale = isBitOfRegister(variable.area) ? BitsOfRegister : 1;
    const int last = (variable.address + variable.driverCount() - 1) / scale;
    if (last <= lastAddress)
        return QString();
    return filled("it would end at %1 %2, but %1s end at %3", noun(variable.area), last + base,
                  lastAddress + base);
}

QString readTypeAndOrder(const QString &type, const QString &order, Variable *variable)
{
    int number = static_cast<int>(ValueType::Plain);
    const QString ofArea = QStringLiteral(" of ") + areaName(variable->area);
    QString fault;
    if (!type.isEmpty())
        fault = readWord(type, QStringLiteral("type") + ofArea, types, variable->width(), &number);
    if (fault.isEmpty() && !order.isNull())
        fault =
            readWord(order, QStringLiteral("order") + ofArea, orders, variable->width(), &variable->order);
    variable->type = static_cast<ValueType>(number);
    return fault;
}

QString readVariable(const QString &text, int base, Variable *variable)
{
    static const QRegularExpression form(
        QStringLiteral("^((?<unit>[^:/]*)/)?(?<area>[^:]*):(?<address>[^:/*]*)(\\*(?<count>[^:/]*))?"
                       "(:(?<type>[^:]*))?(:(?<order>[^:]*))?$"));
    const QString converted = base == 1 ? fromTableNumber(text, base) : QString();
    const auto fields = form.match(converted.isEmpty() ? text : converted);
    if (!fields.hasMatch())
        return QStringLiteral(
            "write [UNIT/]AREA:ADDRESS[*COUNT][:TYPE[:ORDER]], such as hr:100 or 2/hr32:5*8:float");
    const QString unit = fields.captured(u"unit");
    const QString count = fields.captured(u"count");
    variable->unit = unit.isNull() ? variable->unit : decimal(unit, 0, 255);
    if (variable->unit == NotANumber)
        return filled("a unit is a number from 0 to 255, not \"%1\"", unit);
    QString fault = readWord(fields.captured(u"area"), asText("area"), areas, 0, &variable->area);
    if (fault.isEmpty())
        fault = readAddress(fields.captured(u"address"), base, variable);
    if (!fault.isEmpty())
        return fault;
    variable->count = count.isNull() ? variable->count : decimal(count, 1, mostBits);
    if (variable->count == NotANumber)
        return filled("a count is a number from 1 on, not \"%1\"", count);
    fault = readTypeAndOrder(fields.captured(u"type"), fields.captured(u"order"), variable);
    return fault.isEmpty() ? checkEnd(*variable, base) : fault;
}

/// For the end of an error message; empty without a good guess.
QString suggestion(const QString &text, int base)
{
    const QString fromNumber = fromTableNumber(text, base);
    const QString likely = fromNumber.isEmpty() ? likelyVariable(text, base) : fromNumber;
    Variable variable;
    if (!readVariable(likely, base, &variable).isEmpty())
        return QString();
    return filled("; did you mean %1?%2", likely,
                  fromNumber.isEmpty() ? "" : " (--base 1 takes such addresses)");
}

} // namespace

QString Variable::addressText() const
{
    return isBitOfRegister(area) ? filled("%1.%2", address / BitsOfRegister, address % BitsOfRegister)
                                 : QString::number(address);
}

QString placeText(const Variable &variable)
{
    const QString place = filled("%1/%2:%3", variable.unit, areaName(variable.area), variable.addressText());
    return variable.count == 1 ? place : filled("%1*%2", place, variable.count);
}

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
    variable.base = base;
    const QString fault = readVariable(text, base, &variable);
    if (fault.isEmpty())
        return variable;
    *error = filled("variable \"%1\": %2%3", text, fault, suggestion(text, base));
    return std::nullopt;
}
