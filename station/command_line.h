// SPDX-License-Identifier: MIT
/// \file
/// The command line of modbus-station. It is read once, on the main thread.

#pragma once

#include "simulated_station.h"
#include "value_text.h"

#include <optional>

struct StationCommandLine
{
    StationOptions station;
    QList<ValueSetting> values; ///< each for an existing unit, or for all units
    bool trace = false;
    QString answer; ///< the help or version text; when it is not empty, the program prints it and ends
};

/// Reads the words of the command line, of which the first is the program's name. Returns nothing when a word
/// is wrong; *error then has one line of text.
std::optional<StationCommandLine> readCommandLine(const QStringList &words, QString *error);
