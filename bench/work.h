// SPDX-License-Identifier: MIT
// The pieces of work that are measured. Each has a name that says the work; its floor, the least code that
// moves the same bytes under the same locks, is the work of the same name with "floor/" ahead. Times,
// instructions and allocations are all taken from this one table.

#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// What is measured: one exchange, one panel call, one rebuild.
typedef std::function<void()> Step;

struct Work
{
    std::string name;
    std::function<Step()>
        prepare;  ///< puts the driver into a fresh state; the step may be run any number of times
    int size = 0; ///< on a growth curve: variables or records; else 0
};

typedef std::vector<Work> Works;

void addExchanges(Works *works);
void addPanelReads(Works *works);
void addQueueing(Works *works);
void addRebuilds(Works *works);
void addLookUps(Works *works);
void addChecksums(Works *works);

/// Every work, in the order of the reports.
Works allWorks();

/// Ends the program with a line on stderr.
[[noreturn]] void giveUp(const char *what);

/// Gives up when a work did not do what it is measured for.
inline void require(bool holds, const char *what)
{
    if (!holds)
        giveUp(what);
}

/// Keeps the compiler from leaving out what made `value`.
template <typename T> void keep(const T &value)
{
    asm volatile("" : : "r,m"(value) : "memory");
}

} // namespace bench
