// SPDX-License-Identifier: MIT
/// \file
/// How a run of bits or registers is cut into requests of at most one block.

#pragma once

namespace varlists {

/// Pieces of a run: `count` pieces, all of `block` elements but the last.
struct Pieces
{
    int count;
    int block;
    int last;

    int length(int k) const { return k + 1 < count ? block : last; }
    /// Elements ahead of piece k; less than the run's length.
    int offset(int k) const { return k * block; }
};

/// A block below 1 means no limit: one piece. A run of length 0 or less makes no piece.
inline Pieces cut(int length, int block)
{
    if (length <= 0)
        return {0, 0, 0};
    if (block < 1)
        return {1, 0, length};
    const int whole = length / block;
    const int rest = length - whole * block;
    return rest != 0 ? Pieces{whole + 1, block, rest} : Pieces{whole, block, block};
}

} // namespace varlists
