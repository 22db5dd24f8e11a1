// SPDX-License-Identifier: MIT
// Counts what this process takes from the heap: malloc and its kin are replaced in this program, which
// operator new and Qt's containers end in as well. Costs two instructions a call while nothing is counted.

#pragma once

#include <cstddef>
#include <vector>

namespace bench {

/// Counts from its construction to its end. For one thread, one at a time.
class HeapCount
{
public:
    HeapCount();
    ~HeapCount();
    HeapCount(const HeapCount &) = delete;
    HeapCount &operator=(const HeapCount &) = delete;

    void stop();
    /// How often the heap was asked for memory.
    std::size_t allocations() const;
    /// The sizes asked for, the first 4096 of them.
    std::vector<std::size_t> sizes() const;
    /// Bytes that were taken and not given back, the allocator's own words included, and the most there
    /// ever was of them.
    std::ptrdiff_t heldBytes() const;
    std::ptrdiff_t peakBytes() const;
};

} // namespace bench
