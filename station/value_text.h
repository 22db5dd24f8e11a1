// SPDX-License-Identifier: MIT
/// \file
/// The text of values in a station's tables, as a command line or a file gives it and as the station prints
/// it:
///
///     [UNIT/]AREA:ADDRESS=VALUE[,VALUE...]      such as  2/hr:100=7,-1,0xFFFF
///
/// Areas are coil, input (bits, 0 or 1), ir and hr (registers, -32768 to 65535). Values follow each other
/// from the address on. Pure functions, apart from the reading of files: any thread.

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
    QVector<quint16> values; ///< all inside the table
};

/// Reads one setting. Nothing, with one line in *error, when the text is wrong in any part.
std::optional<ValueSetting> parseValueSetting(const QString &text, QString *error);

/// Reads a file: one setting a line; "#" starts a comment. Nothing, with one line that names file and line in
/// *error, when it cannot be read.
std::optional<QList<ValueSetting>> readValueFile(const QString &path, QString *error);

/// The text of a setting; parseValueSetting reads it back.
QString valueText(const ValueSetting &setting);
