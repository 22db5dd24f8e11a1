// SPDX-License-Identifier: MIT
#include "poll_table.h"

#include "panel_text.h"

#include "../explain/filled.h"

#include <algorithm>

namespace {

QStringList valueRow(const ValueState &value, qint64 nowMs, qint64 freshForMs)
{
    const Variable &variable = value.variable();
    QString text = value.readAtMs() < 0 ? QStringLiteral("-") : measuredText(variable, value.value());
    if (value.hasChanged())
        text += QStringLiteral(" *");
    return {variable.name, value.place(), value.stateText(nowMs, freshForMs), text};
}

/// "2 x12, 11 x1": what there was, with how often.
template <typename Map, typename Name> QString countsText(const Map &counts, Name nameOf)
{
    QStringList parts;
    for (const auto &[key, count] : counts)
        parts << filled("%1 x%2", nameOf(key), count);
    return parts.isEmpty() ? QStringLiteral("0") : parts.join(QStringLiteral(", "));
}

QString milliseconds(qint64 microseconds)
{
    return microseconds > 0 ? QString::number(double(microseconds) / 1000, 'f', 2) : QStringLiteral("-");
}

QStringList unitRow(int number, const UnitStatistics &unit, const PanelSnapshot &now)
{
    return {filled(unit.isOff ? "%1 off" : "%1", number),
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

/// "+5 above, +18 below", and how to get there.
QString hiddenText(int above, int below, int columns)
{
    QStringList parts;
    if (above > 0)
        parts << filled("+%1 above", above);
    if (below > 0)
        parts << filled("+%1 below", below);
    return filled("%1 (arrows, PgUp, PgDn; q ends)", parts.join(QStringLiteral(", "))).left(columns);
}

} // namespace

PollTable::PollTable(const QString &peer, qint64 freshForMs)
    : m_peer(peer), m_freshForMs(freshForMs),
      m_units("UNIT,SENT,GOOD,EXC,TIMEOUT,HELD,LATE,RECONN,MED ms,P99 ms,LOST %"),
      m_values("VARIABLE,ADDRESS,STATE,VALUE")
{
}

QStringList PollTable::head(const PanelSnapshot &now, int columns, int mostUnitLines)
{
    QList<QStringList> rows;
    int troubled = 0; // which come first
    for (const auto &[number, unit] : now.units)
        rows.insert(unit.good == unit.requests ? rows.size() : troubled++, unitRow(number, unit, now));
    ColumnLines units = m_units.lines(rows, columns);
    if (const int count = units.body.size(); count > mostUnitLines)
        units.body = units.body.mid(0, mostUnitLines - 1)
                     << filled("... and %1 lines more", count - mostUnitLines + 1);
    return wrapped(m_peer, columns) +
           wrapped(filled("pass %1, link %2", now.passes, linkText(now)), columns) + units.heading +
           units.body + QStringList{QString()};
}

QStringList PollTable::lines(const PanelSnapshot &now)
{
    QList<QStringList> rows;
    for (const ValueState &value : now.values)
        rows << valueRow(value, now.nowMs(), m_freshForMs);
    const ColumnLines values = m_values.lines(rows, AnyWidth);
    return head(now, AnyWidth, AnyWidth) + values.heading + values.body;
}

QStringList PollTable::screen(const PanelSnapshot &now, const ScreenSize &size)
{
    QList<QStringList> rows;
    int failed = 0;
    for (const ValueState &value : now.values)
        rows.insert(value.failure().isEmpty() ? rows.size() : failed++,
                    valueRow(value, now.nowMs(), m_freshForMs));
    const ColumnLines values = m_values.lines(rows, size.columns);
    const int otherLines = 5 + values.body.size();
    QStringList lines =
        head(now, size.columns, std::max({1, size.rows / 3, size.rows - otherLines})) + values.heading;

    const int room = std::max(1, size.rows - lines.size());
    if (values.body.size() <= room)
        return lines + values.body;
    m_page = std::max(1, room - 1);
    m_lastTop = values.body.size() - m_page;
    scroll({});
    lines += values.body.mid(m_top, m_page);
    lines << hiddenText(m_top, m_lastTop - m_top, size.columns);
    return lines.mid(0, size.rows);
}

void PollTable::scroll(const Scroll &by)
{
    m_top = std::clamp(m_top + by.lines + by.pages * m_page, 0, m_lastTop);
}
