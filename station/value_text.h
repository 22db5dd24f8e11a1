// SPDX-License-Identifier: MIT
/// \file
/// The text of values in a station's tables, as in the command line, in a file, and in the lines that the
/// station prints:
///
///     [UNIT/]AREA:ADDRESS=VALUE[,VALUE...]      such as  2/hr:100=7,-1,0xFFFF
///
/// Areas are coil, input (bits, 0 or 1), ir and hr (registers, -32768 to 65535). The first value is for
/// ADDRESS, the next for ADDRESS + 1, and so on. Any thread: only readValueFile does more than convert its
/// arguments.

#pragma once

#include "simulated_unit.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

struct ValueSetting
{
    int unit = 0; ///< 0: every unit
    SimulatedUnit::Table table = QModbusDataUnit::HoldingRegisters;
    int address = 0;
    QVector<quint16> values; ///< from `address` on, all inside the table
};

/// Reads one setting. Returns nothing when any part of the text is wrong; *error then has one line of text.
std::optional<ValueSetting> parseValueSetting(const QString &text, QString *error);

/// Reads a file with one setting in each line; "#" starts a comment. Returns nothing when that fails; *error
/// then has one line of text, which names the file and the line.
std::optional<QList<ValueSetting>> readValueFile(const QString &path, QString *error);

/// The text of a setting; parseValueSetting reads it back.
QString valueText(const ValueSetting &setting);
