// SPDX-License-Identifier: MIT
/// \file
/// Variables as people write them: [UNIT/]AREA:ADDRESS[*COUNT][:TYPE[:ORDER]], with the areas coil, input, irbit,
/// hrbit, ir, hr, ir32 and hr32. Bits of registers are REGISTER.BIT. Any thread.

#pragma once

#include "../../driver/api/codes.h"

#include <QtCore/QString>

#include <optional>

/// 32-bit values in two registers.
inline bool isPairArea(int area)
{
    return area == modbus_driver::AreaInputPairs || area == modbus_driver::AreaHoldingPairs;
}

/// Plain, when none is named: shown as Unsigned, typed as any number of the width. Float has 32 bits.
enum class ValueType { Plain, Unsigned, Signed, Hexadecimal, Float, Text };

/// How a value differs from the driver's order, high register and high byte first. Flags.
enum ByteOrder { HighFirst = 0, LowRegisterFirst = 1, LowByteFirst = 2 };

/// One variable to read or write.
struct Variable
{
    QString name;    ///< what the user calls it: a name from a list file, else the text as written
    int unit = 1;    ///< 0 to 255; 0 is broadcast
    int area = 0;    ///< an AreaCode of the driver
    int address = 0; ///< counted from 0: bit, register, or register * 16 + bit
    int base = 0;    ///< from which the user counts addresses, 0 or 1
    int count = 1;   ///< bits, registers or 32-bit values, as the area holds
    ValueType type = ValueType::Plain;
    int order = HighFirst; ///< of ByteOrder's flags
    double scale = 1;      ///< the shown value is the raw one times this; not 0
    QString measure;       ///< the shown value's unit of measure

    /// The address as the driver takes it: a number, or REGISTER.BIT.
    QString addressText() const;
    /// The count as the driver takes it: bits or registers, two registers a 32-bit value.
    int driverCount() const { return isPairArea(area) ? 2 * count : count; }
    /// Bytes of one value in the driver's host-side layout: 1 for a bit, 2 for a register, 4 for a 32-bit value.
    int width() const { return isPairArea(area) ? 4 : area < modbus_driver::AreaInputRegisters ? 1 : 2; }
};

/// The area and address as the variable names them, with its unit: "2/hr:100*4".
QString placeText(const Variable &variable);
/// The area's name in variables, such as "hr32".
QString areaName(int area);
/// The type's name in variables, such as "u16"; "bit" for all bits.
QString typeName(const Variable &variable);
/// The name of a byte order in values of so many bytes, such as "CDAB" or "BA"; empty for bits.
QString orderName(int order, int width);

/// Reads one variable, whose address counts from `base`, 0 or 1. From 1, numbers with the digit of their table, such
/// as 40001 or 400001, are variables too. Nothing, with one line in *error, when the text is wrong in any part.
std::optional<Variable> parseVariable(const QString &text, QString *error, int base = 0);
