// SPDX-License-Identifier: MIT
#include "poll_table.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

/// Numbers as numbers; hexadecimal ones and text as text.
QJsonArray valuesOf(const ValueState &value)
{
    QJsonArray values;
    const Variable &variable = value.variable();
    for (int i = 0; i < valueCount(variable, value.value()); ++i) {
        QByteArray word;
        appendValue(&word, variable, value.value(), i);
        bool isNumber = false;
        const double number = word.toDouble(&isNumber);
        isNumber = isNumber && variable.type != ValueType::Text;
        values.append(isNumber ? QJsonValue(number) : QJsonValue(QString::fromLatin1(word)));
    }
    return values;
}

QJsonObject variableObject(const ValueState &value, const PanelSnapshot &now, const PollView &view)
{
    const Variable &variable = value.variable();
    const bool isKnown = value.readAtMs() >= 0;
    return {
        {QStringLiteral("name"), variable.name},
        {QStringLiteral("address"), placeText(variable)},
        {QStringLiteral("values"), isKnown ? valuesOf(value) : QJsonArray()},
        {QStringLiteral("age"),
         isKnown ? QJsonValue(double(now.nowMs() - value.readAtMs()) / 1000) : QJsonValue()},
        {QStringLiteral("state"), value.ageText(now.nowMs(), view.freshForMs)},
        {QStringLiteral("changed"), value.hasChanged()},
    };
}

QJsonObject unitObject(int number, const UnitStatistics &unit, const PanelSnapshot &now)
{
    QJsonObject exceptions;
    for (const auto &[code, count] : unit.exceptions)
        exceptions.insert(QString::number(code), count);
    QJsonObject heldBack;
    for (const auto &[fault, count] : unit.heldBack)
        heldBack.insert(replyFaultText(fault), count);
    return {
        {QStringLiteral("unit"), number},
        {QStringLiteral("off"), unit.isOff},
        {QStringLiteral("requests"), unit.requests},
        {QStringLiteral("good"), unit.good},
        {QStringLiteral("exceptions"), exceptions},
        {QStringLiteral("timeouts"), unit.timeOuts},
        {QStringLiteral("held_back"), heldBack},
        {QStringLiteral("late"), unit.late},
        {QStringLiteral("closed"), unit.closed},
        {QStringLiteral("reconnects"), unit.reconnects},
        {QStringLiteral("median_ms"), double(unit.roundTrips.percentile(50)) / 1000},
        {QStringLiteral("p99_ms"), double(unit.roundTrips.percentile(99)) / 1000},
        {QStringLiteral("lost_percent"), unit.lostPercent(now.elapsedMicroseconds)},
    };
}

} // namespace

QByteArray pollJson(const PanelSnapshot &now, const PollView &view)
{
    QJsonArray variables;
    for (const ValueState &value : now.values)
        variables.append(variableObject(value, now, view));
    QJsonArray units;
    for (const auto &[number, unit] : now.units)
        units.append(unitObject(number, unit, now));
    const QJsonObject object = {
        {QStringLiteral("pass"), now.passes},     {QStringLiteral("seconds"), double(now.nowMs()) / 1000},
        {QStringLiteral("link"), linkText(now)},  {QStringLiteral("numbers"), numbersText(now.numbers)},
        {QStringLiteral("variables"), variables}, {QStringLiteral("units"), units},
    };
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}
