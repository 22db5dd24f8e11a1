// SPDX-License-Identifier: MIT
// Counts the heap memory of this process. The program has its own malloc, calloc, realloc and free, which
// operator new and Qt's containers use too. While nothing is counted, this adds two instructions to each
// call.

#pragma once

#include <cstddef>
#include <vector>

namespace bench {

/// Counts from construction to stop() or destruction. For one thread, one object at a time.
class HeapCount
{
public:
    HeapCount();
    ~HeapCount();
    HeapCount(const HeapCount &) = delete;
    HeapCount &operator=(const HeapCount &) = delete;

    void stop();
    /// The number of allocations.
    std::size_t allocations() const;
    /// The sizes of the first 4096 allocations.
    std::vector<std::size_t> sizes() const;
    /// Bytes that were allocated and not freed, including the allocator's own data. heldBytes: now,
    /// peakBytes: the maximum.
    std::ptrdiff_t heldBytes() const;
    std::ptrdiff_t peakBytes() const;
};

} // namespace bench
