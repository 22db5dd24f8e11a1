// SPDX-License-Identifier: MIT
/// \file
/// A snapshot for programs: one JSON object, or rows of CSV. On the main thread.

#pragma once

#include "command_line.h"

#include "../explain/panel_state.h"

enum class RecordForm { None, Json, Csv };

/// --json and --csv.
void addRecordOptions(CommandLine *line);
RecordForm recordFormOption(CommandLine *line);

struct RecordOptions
{
    RecordForm form = RecordForm::None;
    QString station;       ///< its address
    qint64 freshForMs = 0; ///< after which a value counts as old
};

/// The titles of the columns, before the first record; nothing for JSON.
QByteArray recordHeading(RecordForm form);
/// One line for the pass, or with CSV one for each variable. Each ends with a line feed.
QByteArray record(const PanelSnapshot &now, const RecordOptions &options);
