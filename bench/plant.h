// SPDX-License-Identifier: MIT
// A plant in virtual time: one driver polls 250 simulated stations of 400 registers each, some of them dead.

#pragma once

#include "work.h"

namespace bench {

/// Prints, as JSON, how long passes over the plant take for some settings, and the heap that the driver keeps for it.
void printPlant();

/// One pass over the plant without a dead station, in both image modes.
void addPlantPasses(Works *works);

} // namespace bench
