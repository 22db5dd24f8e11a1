// SPDX-License-Identifier: MIT
/// \file
/// Values between the driver's bytes and what people read and type, by the variable's type, order and scale. Pure;
/// any thread.

#pragma once

#include "variable.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

/// All values that `bytes` (the driver's host-side layout) holds whole, in ASCII, with a separator between them. Numbers
/// are written as in JSON, but for "nan", "inf" and "-inf"; hexadecimal ones begin with 0x, and floats have a point, an
/// exponent or a name. A text is one value; in it, bytes that cannot be printed are \xHH.
QByteArray valuesText(const Variable &variable, const QByteArray &bytes, char separator);
/// The same, separated by one space.
QString valueText(const Variable &variable, const QByteArray &bytes);

/// Reads exactly variable.count values, with commas or blanks between them: decimal, or 0x hexadecimal for the
/// bits without scale. A variable of plain type takes negative numbers too (two's complement of the width), and
/// 32-bit ones a fraction, which has a point or an exponent and is sent as IEEE 754 single. Text is one value,
/// which NULs fill up. The bytes are in the driver's host-side layout. Returns nothing, with one line in *error,
/// when a value is wrong or does not fit.
std::optional<QByteArray> parseValues(const Variable &variable, const QString &text, QString *error);
