// SPDX-License-Identifier: MIT
/// \file
/// Values between the driver's bytes and what people read and type.

#pragma once

#include "variable.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

enum class ValueFormat { Decimal, Hexadecimal, Signed, Float };

/// The values in `bytes` (the driver's host-side layout), separated by one space. Float is for 32-bit values;
/// other areas print it as Decimal. Values that bytes does not hold wholly are left out.
QString valueText(const Variable &variable, const QByteArray &bytes, ValueFormat format);

/// Reads a comma-separated list of exactly variable.count values: decimal, 0x hexadecimal, negative, or for
/// 32-bit values a decimal fraction (sent as IEEE 754 single). Nothing, with one line in *error, when a value is wrong or
/// does not fit.
std::optional<QByteArray> parseValues(const Variable &variable, const QString &text, QString *error);
