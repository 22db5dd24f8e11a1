// SPDX-License-Identifier: MIT
#include "text_columns.h"

#include <algorithm>
#include <numeric>

namespace {

const int gap = 2;          // between two columns
const int longestWord = 16; // that is never broken

int total(const QVector<int> &widths)
{
    return std::accumulate(widths.begin(), widths.end(), gap * (widths.size() - 1));
}

int widestWord(const QString &cell)
{
    int widest = 0;
    for (const QStringRef &word : cell.splitRef(QLatin1Char(' ')))
        widest = qMax(widest, word.size());
    return qMin(widest, longestWord);
}

/// Takes from the widest columns until all fit. Nothing when words would have to be broken for that.
QVector<int> fitted(QVector<int> widths, const QList<QStringList> &rows, int room)
{
    if (total(widths) <= room)
        return widths;
    QVector<int> least(widths.size());
    for (const QStringList &row : rows) {
        for (int i = 0; i < row.size(); ++i)
            least[i] = qMax(least[i], widestWord(row.at(i)));
    }
    if (total(least) > room)
        return {};
    const auto spare = [&](int i) { return widths.at(i) > least.at(i) ? widths.at(i) : 0; };
    while (total(widths) > room) {
        int widest = 0;
        for (int i = 1; i < widths.size(); ++i)
            widest = spare(i) > spare(widest) ? i : widest;
        --widths[widest];
    }
    return widths;
}

/// The row's cells side by side, in as many lines as the longest cell takes.
QStringList rowLines(const QStringList &row, const QVector<int> &widths)
{
    QStringList lines;
    int column = 0;
    for (int i = 0; i < row.size(); ++i) {
        const QStringList cell = wrapped(row.at(i), widths.at(i));
        while (lines.size() < cell.size())
            lines << QString();
        for (int y = 0; y < cell.size(); ++y) {
            if (cell.at(y).isEmpty())
                continue;
            lines[y].resize(column, QLatin1Char(' '));
            lines[y] += cell.at(y);
        }
        column += widths.at(i) + gap;
    }
    return lines;
}

/// Each cell behind its title.
QString listed(const QStringList &titles, const QStringList &row)
{
    QStringList parts;
    for (int i = 0; i < row.size(); ++i)
        parts << titles.at(i) + QLatin1Char(' ') + row.at(i);
    return parts.join(QStringLiteral("  "));
}

} // namespace

QStringList wrapped(const QString &text, int room)
{
    if (text.size() <= room)
        return {text};
    QStringList lines;
    int from = 0;
    while (text.size() - from > room) {
        const int blank = text.lastIndexOf(QLatin1Char(' '), from + room);
        const int end = blank > from ? blank : from + room;
        lines << text.mid(from, end - from);
        from = end + (blank > from ? 1 : 0);
    }
    return lines << text.mid(from);
}

TextColumns::TextColumns(const char *titles)
    : m_titles(QString::fromLatin1(titles).split(QLatin1Char(','))), m_widths(m_titles.size())
{
}

ColumnLines TextColumns::lines(const QList<QStringList> &rows, int room)
{
    const QList<QStringList> all = QList<QStringList>{m_titles} + rows;
    for (const QStringList &row : all) {
        for (int i = 0; i < row.size(); ++i)
            m_widths[i] = qMax(m_widths.at(i), row.at(i).size());
    }
    const QVector<int> widths = fitted(m_widths, all, room);
    ColumnLines text;
    if (!widths.isEmpty())
        text.heading = rowLines(m_titles, widths);
    for (const QStringList &row : rows)
        text.body += widths.isEmpty() ? wrapped(listed(m_titles, row), room) : rowLines(row, widths);
    return text;
}
