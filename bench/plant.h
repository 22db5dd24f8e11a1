// SPDX-License-Identifier: MIT
// A plant in virtual time: one driver polls 250 simulated stations of 400 registers each, some of them dead.

#pragma once

#include "work.h"

namespace bench {

/// Prints, as JSON, the time of a pass over the plant for several settings, and the heap bytes that the
/// driver needs.
void printPlant();

/// One pass over the plant without a dead station, in both image modes.
void addPlantPasses(Works *works);

} // namespace bench
