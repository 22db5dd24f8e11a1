// SPDX-License-Identifier: MIT
/// \file
/// The command line of modbus-station. Read once, on the main thread.

#pragma once

#include "simulated_station.h"
#include "value_text.h"

#include <optional>

struct StationCommandLine
{
    StationOptions station;
    QList<ValueSetting> values; ///< of units that there are
    bool trace = false;
    QString answer; ///< not empty: print this and end, the help or the version was asked for
};

/// Reads the words behind and including the program's name. Nothing, with one line in *error, when any is
/// wrong.
std::optional<StationCommandLine> readCommandLine(const QStringList &words, QString *error);
