// SPDX-License-Identifier: MIT
/// \file
/// Splits a run of bits or registers into requests of at most one block.

#pragma once

namespace modbus_driver {

/// A run of bits or registers, split into blocks.
struct Blocks
{
    int count; ///< number of blocks
    int block; ///< elements of each block except the last
    int last;  ///< elements of the last block

    int length(int k) const { return k + 1 < count ? block : last; }
    /// Elements before block k. For k below count it is less than the length of the run.
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
