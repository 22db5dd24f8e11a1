// SPDX-License-Identifier: MIT
#include "variable.h"

#include "../../driver/base/modbus_wire.h"

#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <algorithm>

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

QString readVariable(const QString &text, Variable *variable)
{
    const int slash = text.indexOf(QLatin1Char('/'));
    const int colon = text.indexOf(QLatin1Char(':'));
    const int star = text.indexOf(QLatin1Char('*'));
    if (colon < 0 || slash > colon || (star >= 0 && star < colon))
        return QStringLiteral("write [UNIT/]AREA:ADDRESS[*COUNT], such as hr:100 or 2/coil:5*8");

    const QString unit = text.left(qMax(0, slash));
    const int unitNumber = slash < 0 ? variable->unit : decimal(unit, 255);
    if (unitNumber == NotANumber)
        return QStringLiteral("a unit is a number from 0 to 255, not \"%1\"").arg(unit);
    variable->unit = unitNumber;

    const QString area = text.mid(slash + 1, colon - slash - 1);
    variable->area = areaOf(area);
    if (variable->area == NoArea)
        return QStringLiteral(
                   "there is no area \"%1\"; the areas are coil, input, irbit, hrbit, ir, hr, ir32, hr32")
            .arg(area);

    QString error = readAddress(text.mid(colon + 1, star < 0 ? -1 : star - colon - 1), variable);
    if (error.isEmpty() && star >= 0)
        error = readCount(text.mid(star + 1), variable);
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
