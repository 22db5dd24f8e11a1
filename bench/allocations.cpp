// SPDX-License-Identifier: MIT
#include "allocations.h"

#include <malloc.h>

#include <algorithm>
#include <array>

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void __libc_free(void *block);
}

namespace {

struct Tally
{
    std::array<std::size_t, 4096> sizes;
    std::size_t allocations;
    std::ptrdiff_t held, peak;
};

bool counting = false;
Tally tally;

std::ptrdiff_t weight(void *block)
{
    return block ? static_cast<std::ptrdiff_t>(malloc_usable_size(block) + sizeof(std::size_t)) : 0;
}

void *taken(void *block, std::size_t size)
{
    if (tally.allocations < tally.sizes.size())
        tally.sizes[tally.allocations] = size;
    ++tally.allocations;
    tally.held += weight(block);
    tally.peak = std::max(tally.peak, tally.held);
    return block;
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) void *malloc(std::size_t size)
{
    void *block = __libc_malloc(size);
    return counting ? taken(block, size) : block;
}

__attribute__((visibility("default"))) void *calloc(std::size_t count, std::size_t size)
{
    void *block = __libc_calloc(count, size);
    return counting ? taken(block, count * size) : block;
}

__attribute__((visibility("default"))) void *realloc(void *block, std::size_t size)
{
    if (counting)
        tally.held -= weight(block);
    void *moved = __libc_realloc(block, size);
    return counting ? taken(moved, size) : moved;
}

__attribute__((visibility("default"))) void free(void *block)
{
    if (counting)
        tally.held -= weight(block);
    __libc_free(block);
}
}

namespace bench {

HeapCount::HeapCount()
{
    tally = Tally();
    counting = true;
}

HeapCount::~HeapCount()
{
    stop();
}

void HeapCount::stop()
{
    counting = false;
}

std::size_t HeapCount::allocations() const
{
    return tally.allocations;
}

std::vector<std::size_t> HeapCount::sizes() const
{
    const std::size_t known = std::min(tally.allocations, tally.sizes.size());
    return std::vector<std::size_t>(tally.sizes.begin(),
                                    tally.sizes.begin() + static_cast<std::ptrdiff_t>(known));
}

std::ptrdiff_t HeapCount::heldBytes() const
{
    return tally.held;
}

std::ptrdiff_t HeapCount::peakBytes() const
{
    return tally.peak;
}

} // namespace bench
