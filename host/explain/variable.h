// SPDX-License-Identifier: MIT
/// \file
/// Variables as people write them: [UNIT/]AREA:ADDRESS[*COUNT], with the areas coil, input, irbit, hrbit, ir,
/// hr, ir32 and hr32. Addresses are protocol addresses, counted from 0; bits of registers are REGISTER.BIT.

#pragma once

#include "../../driver/api/codes.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

/// 32-bit values in two registers.
inline bool isPairArea(int area)
{
    return area == modbus_driver::AreaInputPairs || area == modbus_driver::AreaHoldingPairs;
}

/// One variable to read or write.
struct Variable
{
    QString name;        ///< what the user calls it: a name from a list file, else the text as written
    int unit = 1;        ///< 0 to 255; 0 is broadcast
    int area = 0;        ///< an AreaCode of the driver
    QString addressText; ///< as the driver takes it
    int address = 0;     ///< the same as a number: bit, register, or register * 16 + bit
    int count = 1;       ///< bits, registers or 32-bit values, as the area holds

    /// The count as the driver takes it: bits or registers, two registers a 32-bit value.
    int driverCount() const { return isPairArea(area) ? 2 * count : count; }
};

/// The area's name in variables, such as "hr32".
QString areaName(int area);

/// Reads one variable. Nothing, with one line in *error, when the text is wrong in any part.
std::optional<Variable> parseVariable(const QString &text, QString *error);

/// Reads a list file: one variable a line, then optionally its name; "#" starts a comment. Nothing, with one
/// line naming file and line in *error, when it cannot be read.
std::optional<QList<Variable>> readVariableFile(const QString &path, QString *error);
