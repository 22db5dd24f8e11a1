// SPDX-License-Identifier: MIT
#include "text_columns.h"

#include <algorithm>
#include <numeric>
#include <utility>

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

/// Takes the words that fit a line, or a part of a longer word.
QStringRef takeLine(QStringRef *rest, int room)
{
    if (rest->size() <= room)
        return std::exchange(*rest, QStringRef());
    const int blank = rest->lastIndexOf(QLatin1Char(' '), room);
    const QStringRef line = rest->left(blank > 0 ? blank : room);
    *rest = rest->mid(line.size() + (blank > 0 ? 1 : 0));
    return line;
}

/// The row's cells side by side, in as many lines as the longest cell takes.
QStringList rowLines(const QStringList &row, const QVector<int> &widths)
{
    QStringList lines{QString()};
    int column = 0;
    for (int i = 0; i < row.size(); ++i) {
        QStringRef rest(&row.at(i));
        for (int y = 0; !rest.isEmpty(); ++y) {
            if (y == lines.size())
                lines << QString();
            lines[y].resize(column, QLatin1Char(' '));
            lines[y] += takeLine(&rest, widths.at(i));
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
    QStringRef rest(&text);
    QStringList lines;
    do
        lines << takeLine(&rest, room).toString();
    while (!rest.isEmpty());
    return lines;
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
