// SPDX-License-Identifier: MIT
// What panel threads ask of the driver, with arguments from a script.

#pragma once

#include "script.h"

namespace panel {

/// Counts that cost no time: up to some dozens, nothing, or less than nothing.
int countOf(Script *script);

void rebuild(Script *script);
void read(Script *script);
void write(Script *script);
void switchStation(Script *script);
/// A write or a one-shot read; 1 when it was queued whatever the limit, else 0.
int queue(Script *script);

} // namespace panel
