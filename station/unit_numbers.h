// SPDX-License-Identifier: MIT
/// \file
/// Lists of unit numbers as people write them. Pure; any thread.

#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

/// Reads numbers and ranges from 1 to 255, such as "1-5,7". Nothing when a part is wrong or a unit is named twice.
std::optional<QList<int>> parseUnitNumbers(const QString &text);
