// SPDX-License-Identifier: MIT
/// \file
/// From variables to the driver's poll list: the one place that decides what poll sends, and so what plan
/// prints. On the main thread.

#pragma once

#include "driver_library.h"
#include "variable.h"

#include <set>

std::set<int> unitsOf(const QList<Variable> &variables);

/// Settings with all that shapes the requests; the rest is for the caller to fill in. At most `block`
/// registers, or bytes of bits, in a request.
CommSettings pollSettings(const QList<Variable> &variables, int block);

/// Puts the variables in the place of the driver's poll list, once it has its settings. Returns the number of
/// requests.
int pollVariables(const DriverLibrary &driver, const QList<Variable> &variables);
