// SPDX-License-Identifier: MIT
/// \file
/// A snapshot for people: a table of the values with their ages, below it one line for each unit. And for
/// programs: one JSON object. Pure.

#pragma once

#include "../explain/panel_state.h"
#include "../explain/value_text.h"

struct PollView
{
    qint64 freshForMs = 0; ///< after which a value counts as old
};

/// The lines of the table. A changed value is followed by an asterisk.
QStringList pollTable(const PanelSnapshot &now, const PollView &view);

/// One object on one line: pass, seconds, link, numbers, variables, units.
QByteArray pollJson(const PanelSnapshot &now, const PollView &view);

/// The area and address as the variable names them, with its unit: "2/hr:100*4".
QString placeText(const Variable &variable);

/// The state of the link: "up", "backing off after connection refused", and whether the station lacks numbers.
QString linkText(const PanelSnapshot &now);

/// What the station does with transaction numbers: "echoed", "not echoed", "unknown".
QString numbersText(TransactionNumbers::Habit numbers);
