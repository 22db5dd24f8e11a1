// SPDX-License-Identifier: MIT
#include "text_columns.h"

#include <algorithm>
#include <numeric>

namespace {

const int gap = 2;          // between two columns
const int longestWord = 16; // that is never broken

int total(const std::vector<int> &widths)
{
    return std::accumulate(widths.begin(), widths.end(), gap * (static_cast<int>(widths.size()) - 1));
}

int widestWord(const QString &cell)
{
    int widest = 0;
    for (const QStringRef &word : cell.splitRef(QLatin1Char(' ')))
        widest = qMax(widest, word.size());
    return qMin(widest, longestWord);
}

/// Takes from the widest columns until all fit. Nothing when words would have to be broken for that.
std::vector<int> fitted(std::vector<int> widths, const QList<QStringList> &rows, int room)
{
    if (total(widths) <= room)
        return widths;
    std::vector<int> least(widths.size());
    for (const QStringList &row : rows) {
        for (std::size_t i = 0; i < widths.size(); ++i)
            least[i] = qMax(least[i], widestWord(row.at(static_cast<int>(i))));
    }
    if (total(least) > room)
        return {};
    for (int &width : widths)
        width = qMin(width, room);
    const auto spare = [&](std::size_t i) { return widths[i] > least[i] ? widths[i] : 0; };
    while (total(widths) > room) {
        std::size_t widest = 0;
        for (std::size_t i = 1; i < widths.size(); ++i)
            widest = spare(i) > spare(widest) ? i : widest;
        --widths[widest];
    }
    return widths;
}

/// The row's cells side by side, in as many lines as the longest cell takes.
void appendRow(QStringList *lines, const QStringList &row, const std::vector<int> &widths)
{
    QList<QStringList> cells;
    int height = 1;
    for (int i = 0; i < row.size(); ++i) {
        cells << wrapped(row.at(i), widths[static_cast<std::size_t>(i)]);
        height = qMax(height, cells.last().size());
    }
    for (int y = 0; y < height; ++y) {
        QString line;
        int column = 0;
        for (int i = 0; i < cells.size(); ++i) {
            const QString cell = cells.at(i).value(y);
            if (!cell.isEmpty())
                line = line.leftJustified(column) + cell;
            column += widths[static_cast<std::size_t>(i)] + gap;
        }
        *lines << line;
    }
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

std::vector<int> TextColumns::widthsOf(const QStringList &cells)
{
    std::vector<int> widths;
    for (const QString &cell : cells)
        widths.push_back(cell.size());
    return widths;
}

ColumnLines TextColumns::lines(const QList<QStringList> &rows, int room)
{
    for (const QStringList &row : rows) {
        for (std::size_t i = 0; i < m_widths.size(); ++i)
            m_widths[i] = qMax(m_widths[i], row.at(static_cast<int>(i)).size());
    }
    const std::vector<int> widths = fitted(m_widths, QList<QStringList>{m_titles} + rows, room);
    if (widths.empty())
        return {{}, listed(rows, room)};
    ColumnLines all;
    appendRow(&all.heading, m_titles, widths);
    for (const QStringList &row : rows)
        appendRow(&all.body, row, widths);
    return all;
}

QStringList TextColumns::listed(const QList<QStringList> &rows, int room) const
{
    QStringList lines;
    for (const QStringList &row : rows) {
        QString line;
        for (int i = 0; i < row.size(); ++i) {
            const QString part =
                (i > 0 ? QStringLiteral("  ") : QString()) + m_titles.at(i) + QLatin1Char(' ') + row.at(i);
            if (i > 0 && line.size() + part.size() > room) {
                lines << wrapped(line, room);
                line.clear();
            }
            line += part;
        }
        lines << wrapped(line, room);
    }
    return lines;
}
