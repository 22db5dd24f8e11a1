// SPDX-License-Identifier: MIT
/// \file
/// Rows of cells as lines of text that fit a screen. On the main thread.

#pragma once

#include <QtCore/QList>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <limits>

const int AnyWidth = std::numeric_limits<int>::max();

struct ColumnLines
{
    QStringList heading; ///< one line; empty when each cell has its title in front
    QStringList body;
};

/// A table whose columns never get narrower, so that they stay in place from one drawing to the next.
class TextColumns
{
public:
    /// Titles with commas between them.
    explicit TextColumns(const char *titles);

    /// Lines of at most `room` characters. A cell that is too wide continues below itself; where even that takes too
    /// much room, a row becomes a list of titles and cells.
    ColumnLines lines(const QList<QStringList> &rows, int room);

private:
    QStringList m_titles;
    QVector<int> m_widths;
};

/// Lines of at most `room` characters, from words with one space between them. A longer word is broken.
QStringList wrapped(const QString &text, int room);
