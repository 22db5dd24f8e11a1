// SPDX-License-Identifier: MIT
#include "poll_table.h"

namespace {

const int widestValue = 60;

/// Lines of cells with every column as wide as its widest cell.
QStringList aligned(const QList<QStringList> &rows)
{
    std::vector<int> widths;
    for (const QStringList &row : rows) {
        widths.resize(qMax(widths.size(), static_cast<std::size_t>(row.size())));
        for (int i = 0; i < row.size(); ++i)
            widths[static_cast<std::size_t>(i)] = qMax(widths[static_cast<std::size_t>(i)], row.at(i).size());
    }
    QStringList lines;
    for (const QStringList &row : rows) {
        QString line;
        for (int i = 0; i < row.size(); ++i)
            line += row.at(i).leftJustified(widths[static_cast<std::size_t>(i)] + 2);
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        lines << line;
    }
    return lines;
}

QStringList valueRow(const ValueState &value, const PanelSnapshot &now, const PollView &view)
{
    const Variable &variable = value.variable();
    QString text =
        value.readAtMs() < 0 ? QStringLiteral("-") : valueText(variable, value.value(), widestValue);
    if (text.size() > widestValue)
        text = text.left(widestValue - 3) + QStringLiteral("...");
    if (value.hasChanged())
        text += QStringLiteral(" *");
    return {variable.name, placeText(variable), text, value.ageText(now.nowMs(), view.freshForMs)};
}

/// "2 x12, 11 x1": what there was, with how often.
template <typename Map, typename Name> QString countsText(const Map &counts, Name nameOf)
{
    QStringList parts;
    for (const auto &[key, count] : counts)
        parts << QStringLiteral("%1 x%2").arg(nameOf(key)).arg(count);
    return parts.isEmpty() ? QStringLiteral("0") : parts.join(QStringLiteral(", "));
}

QString milliseconds(qint64 microseconds)
{
    return QString::number(double(microseconds) / 1000, 'f', 2);
}

QStringList unitRow(int number, const UnitStatistics &unit, const PanelSnapshot &now)
{
    return {unit.isOff ? QStringLiteral("%1 off").arg(number) : QString::number(number),
            QString::number(unit.requests),
            QString::number(unit.good),
            countsText(unit.exceptions, [](int code) { return code; }),
            QString::number(unit.timeOuts),
            countsText(unit.heldBack, replyFaultText),
            QString::number(unit.late),
            QString::number(unit.reconnects),
            milliseconds(unit.roundTrips.percentile(50)),
            milliseconds(unit.roundTrips.percentile(99)),
            QString::number(unit.lostPercent(now.elapsedMicroseconds), 'f', 1)};
}

} // namespace

QString placeText(const Variable &variable)
{
    QString text =
        QStringLiteral("%1/%2:%3").arg(variable.unit).arg(areaName(variable.area), variable.addressText);
    if (variable.count != 1)
        text += QStringLiteral("*%1").arg(variable.count);
    return text;
}

QString numbersText(TransactionNumbers::Habit numbers)
{
    switch (numbers) {
    case TransactionNumbers::Echoed:
        return QStringLiteral("echoed");
    case TransactionNumbers::NotEchoed:
        return QStringLiteral("not echoed");
    case TransactionNumbers::Unknown:
        break;
    }
    return QStringLiteral("unknown");
}

QString linkText(const PanelSnapshot &now)
{
    switch (now.link) {
    case LinkState::Connecting:
        return QStringLiteral("connecting after %1").arg(linkCauseText(now.linkCause));
    case LinkState::BackingOff:
        return QStringLiteral("backing off after %1").arg(linkCauseText(now.linkCause));
    case LinkState::Up:
    case LinkState::Waiting:
        break;
    }
    return now.numbers == TransactionNumbers::NotEchoed
               ? QStringLiteral("up, the station echoes no transaction numbers")
               : QStringLiteral("up");
}

QStringList pollTable(const PanelSnapshot &now, const PollView &view)
{
    QList<QStringList> rows = {{QStringLiteral("VARIABLE"), QStringLiteral("ADDRESS"),
                                QStringLiteral("VALUE"), QStringLiteral("STATE")}};
    for (const ValueState &value : now.values)
        rows << valueRow(value, now, view);
    QStringList lines = aligned(rows);

    rows.clear();
    rows << QStringLiteral("UNIT,SENT,GOOD,EXC,TIMEOUT,HELD,LATE,RECONN,MED ms,P99 ms,LOST %")
                .split(QLatin1Char(','));
    for (const auto &[number, unit] : now.units)
        rows << unitRow(number, unit, now);
    lines << QString() << aligned(rows);
    lines << QStringLiteral("pass %1, link %2").arg(now.passes).arg(linkText(now));
    return lines;
}
