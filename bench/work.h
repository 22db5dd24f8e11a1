// SPDX-License-Identifier: MIT
// The works that are measured. The name of a work says what it does. Its floor has the same name with the
// prefix "floor/"; it is the cheapest code that moves the same bytes under the same locks. Times,
// instructions and allocations are all measured with this one table.

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

/// Ends the program when a condition does not hold, so that a work that fails is not measured.
inline void require(bool holds, const char *what)
{
    if (!holds)
        giveUp(what);
}

/// Prevents the compiler from removing the code that computes `value`.
template <typename T> void keep(const T &value)
{
    asm volatile("" : : "r,m"(value) : "memory");
}

} // namespace bench
