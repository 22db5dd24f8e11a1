// SPDX-License-Identifier: MIT
/// \file
/// A snapshot for people: the station, its link, a line for each unit, and a table of the values with their states.
/// On the main thread.

#pragma once

#include "terminal.h"
#include "text_columns.h"

#include "../explain/panel_state.h"

class PollTable
{
public:
    /// `peer` names the station; a value counts as old after `freshForMs`.
    PollTable(const QString &peer, qint64 freshForMs);

    /// Everything, in lines of any length. A changed value is followed by an asterisk.
    QStringList lines(const PanelSnapshot &now);
    /// The part that fits a screen, failed variables first. The last line tells how many lines do not fit.
    QStringList screen(const PanelSnapshot &now, const ScreenSize &size);
    /// Moves the part that screen() shows, as far as there are lines.
    void scroll(const Scroll &by);

private:
    QStringList head(const PanelSnapshot &now, int columns, int mostUnitLines);

    QString m_peer;
    qint64 m_freshForMs;
    TextColumns m_units;
    TextColumns m_values;
    int m_top = 0; ///< first line of the values on the screen
    int m_lastTop = 0;
    int m_page = 1; ///< lines of the values that fit
};
