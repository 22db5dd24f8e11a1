// SPDX-License-Identifier: MIT
/// \file
/// Values between the driver's bytes and what people read and type.

#pragma once

#include "variable.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <limits>
#include <optional>

enum class ValueFormat { Decimal, Hexadecimal, Signed, Float };

/// The values in `bytes` (the driver's host-side layout), separated by one space. Float is for 32-bit values;
/// other areas print it as Decimal. A value that `bytes` holds only in part is left out,
/// and so are values behind `longest` characters.
QString valueText(const Variable &variable, const QByteArray &bytes, ValueFormat format,
                  int longest = std::numeric_limits<int>::max());

/// IEEE 754 single with these bits: the fewest digits that read back to the same bits, always with a point,
/// an exponent, "nan" or "inf", so that parseValues can tell it from a whole number.
QString floatText(quint32 bits);

/// Reads a comma-separated list of exactly variable.count values: decimal, 0x hexadecimal, negative (two's
/// complement of the width), or for 32-bit values a fraction, which has a point or an exponent and is sent as
/// IEEE 754 single. The bytes are in the driver's host-side layout. Returns nothing, with one line in
/// *error, when a value is wrong or does not fit.
std::optional<QByteArray> parseValues(const Variable &variable, const QString &text, QString *error);
