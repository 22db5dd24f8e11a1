// SPDX-License-Identifier: MIT
// What is counted instead of timed, the same at every run: allocations and bytes of the heap, and steps for a
// program that counts instructions from outside.

#pragma once

#include "work.h"

namespace bench {

/// Prints, as JSON, the allocations of one step of every work that is not a growth curve, with what each is.
void printAllocations();

/// Prints, as JSON, the heap bytes that rebuilds keep and need at most, per variable.
void printMemory();

/// Prints, as JSON, the heap bytes of values that are kept per station: record, value bytes and index of each.
void printValues();

/// Calls step `steps` times. Never inlined: a program that counts from outside begins and ends with it.
__attribute__((noinline)) void countedSteps(const Step &step, int steps);

/// Runs `steps` steps of one work. False, with a line on stderr, when there is no such work.
bool runSteps(const std::string &name, int steps);

/// Runs every work whose name has `part` in it, after some steps to warm up `steps` steps in one call of
/// countedSteps, and prints name and number of steps: one of those that are long. False when there is no such work.
bool runCounted(const std::string &part, int steps);

} // namespace bench
