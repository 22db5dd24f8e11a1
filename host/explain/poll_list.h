// SPDX-License-Identifier: MIT
/// \file
/// Variables are put on the driver's poll list or among its one-shot reads: the one place that decides what poll
/// sends, and so what plan prints. On the main thread.

#pragma once

#include "variable.h"

#include "../link/driver_library.h"

#include <set>

/// The hostId of everything this host queues: above 11, so that it does not shift the driver's error codes.
const int panelHostId = 100;

std::set<int> unitsOf(const QList<Variable> &variables);

/// The settings that shape the requests; the caller fills in the others. At most `block`
/// registers, or bytes of bits, in a request.
CommSettings pollSettings(const QList<Variable> &variables, int block);

/// Replaces the driver's poll list; the driver must have its settings. Returns the number of
/// requests.
int pollVariables(const DriverLibrary &driver, const QList<Variable> &variables);

/// Queues each variable as a one-shot read; its hostItem is its position. False when the driver's queue is full and may
/// not hold all.
bool queueReads(const DriverLibrary &driver, const CommSettings &settings, const QList<Variable> &variables);
