// SPDX-License-Identifier: MIT
// Measurements that count instead of time and give the same numbers in every run: allocations and heap bytes,
// and steps for another program that counts instructions.

#pragma once

#include "work.h"

namespace bench {

/// Prints, as JSON, the allocations of one step of every work that is not a growth curve, with what each is.
void printAllocations();

/// Prints, as JSON, the heap bytes that rebuilds keep and need at most, per variable.
void printMemory();

/// Prints, as JSON, the heap bytes of values that are kept per station: record, value bytes and index of
/// each.
void printValues();

/// Calls step `steps` times. Not inlined, because the program that counts instructions starts and stops at
/// this function.
__attribute__((noinline)) void countedSteps(const Step &step, int steps);

/// Runs `steps` steps of one work. False, with a line on stderr, when there is no such work.
bool runSteps(const std::string &name, int steps);

/// Runs every work whose name contains `part`: first some steps to warm up, then `steps` steps in one call of
/// countedSteps (one step for a long work). Prints name and number of steps. False when there is no such
/// work.
bool runCounted(const std::string &part, int steps);

} // namespace bench
