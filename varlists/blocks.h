// SPDX-License-Identifier: MIT
/// \file
/// Splits a run of bits or registers into requests of at most one block.

#pragma once

namespace modbus_driver {

/// A run in `count` blocks, all of `block` elements but the last.
struct Blocks
{
    int count;
    int block;
    int last;

    int length(int k) const { return k + 1 < count ? block : last; }
    /// Elements ahead of block k; less than the run's length.
    int offset(int k) const { return k * block; }
};

/// A block below 1 means no limit: one block. A run of length 0 or less has no block.
inline Blocks splitIntoBlocks(int length, int block)
{
    if (length <= 0)
        return {0, 0, 0};
    if (block < 1)
        return {1, 0, length};
    const int whole = length / block;
    const int rest = length - whole * block;
    return rest != 0 ? Blocks{whole + 1, block, rest} : Blocks{whole, block, block};
}

} // namespace modbus_driver
