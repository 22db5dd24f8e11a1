// SPDX-License-Identifier: MIT
#include "value_text.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

namespace {
const qint64 longestFile = 1 << 20; // bytes

struct AreaRow
{
    const char *name;
    SimulatedUnit::Table table;
    int lowest;
    int highest;
};

const AreaRow areaRows[] = {
    {"coil", QModbusDataUnit::Coils, 0, 1},
    {"input", QModbusDataUnit::DiscreteInputs, 0, 1},
    {"ir", QModbusDataUnit::InputRegisters, -32768, 65535},
    {"hr", QModbusDataUnit::HoldingRegisters, -32768, 65535},
};

const AreaRow *findArea(const QString &name)
{
    for (const AreaRow &row : areaRows) {
        if (name == QLatin1String(row.name))
            return &row;
    }
    return nullptr;
}

std::optional<int> numberWithin(const QString &text, int lowest, int highest)
{
    bool ok = false;
    const bool hexadecimal = text.startsWith(QLatin1String("0x"));
    const int number = hexadecimal ? text.mid(2).toInt(&ok, 16) : text.toInt(&ok, 10);
    return ok && number >= lowest && number <= highest ? std::optional<int>(number) : std::nullopt;
}

// Returns the error text; empty when the setting was read.
QString readSetting(const QString &text, ValueSetting *setting)
{
    static const QRegularExpression form(QStringLiteral("^(?:(\\d+)/)?(\\w+):(\\d+)=(.+)$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return QStringLiteral("write [UNIT/]AREA:ADDRESS=VALUE[,VALUE...], such as hr:100=7");
    if (!match.captured(1).isEmpty()) {
        const std::optional<int> unit = numberWithin(match.captured(1), 1, 255);
        if (!unit)
            return QStringLiteral("a unit is a number from 1 to 255");
        setting->unit = *unit;
    }
    const AreaRow *area = findArea(match.captured(2));
    if (!area)
        return QStringLiteral("the areas are coil, input, ir, hr");
    setting->table = area->table;
    for (const QString &word : match.captured(4).split(QLatin1Char(','))) {
        const std::optional<int> value = numberWithin(word, area->lowest, area->highest);
        if (!value)
            return QStringLiteral("%1 takes values from %2 to %3, not \"%4\"")
                .arg(QLatin1String(area->name), QString::number(area->lowest), QString::number(area->highest),
                     word);
        setting->values << static_cast<quint16>(*value);
    }
    const std::optional<int> address =
        numberWithin(match.captured(3), 0, SimulatedUnit::tableSize - setting->values.size());
    if (!address)
        return QStringLiteral("addresses end at %1").arg(SimulatedUnit::tableSize - 1);
    setting->address = *address;
    return QString();
}
} // namespace

std::optional<ValueSetting> parseValueSetting(const QString &text, QString *error)
{
    ValueSetting setting;
    const QString problem = readSetting(text, &setting);
    if (problem.isEmpty())
        return setting;
    *error = QStringLiteral("value \"%1\": %2").arg(text, problem);
    return std::nullopt;
}

std::optional<QList<ValueSetting>> readValueFile(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > longestFile) {
        *error = QStringLiteral("cannot read %1: %2")
                     .arg(path, file.isOpen() ? QStringLiteral("larger than 1 MiB") : file.errorString());
        return std::nullopt;
    }
    QList<ValueSetting> settings;
    const QByteArray content = file.read(longestFile);
    const QStringList lines = QString::fromUtf8(content.constData(), content.size()).split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i) {
        const QString text = lines.at(i).section(QLatin1Char('#'), 0, 0).simplified();
        if (text.isEmpty())
            continue;
        const std::optional<ValueSetting> setting = parseValueSetting(text, error);
        if (!setting) {
            *error = QStringLiteral("%1:%2: %3").arg(path, QString::number(i + 1), *error);
            return std::nullopt;
        }
        settings << *setting;
    }
    return settings;
}

QString valueText(const ValueSetting &setting)
{
    QStringList values;
    for (const quint16 value : setting.values)
        values << QString::number(value);
    QString area;
    for (const AreaRow &row : areaRows) {
        if (row.table == setting.table)
            area = QLatin1String(row.name);
    }
    const QString unit = setting.unit == 0 ? QString() : QStringLiteral("%1/").arg(setting.unit);
    return QStringLiteral("%1%2:%3=%4")
        .arg(unit, area, QString::number(setting.address), values.join(QLatin1Char(',')));
}
