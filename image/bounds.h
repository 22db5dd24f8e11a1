// SPDX-License-Identifier: MIT
/// \file
/// What of an access lies inside an image array, and room for it in the host's array.

#pragma once

#include <QtCore/QByteArray>

namespace image {

/// `count` elements from `start` on, cut to a table of `table` elements and to no more than that many:
/// elements `first` up to, not including, `end` lie inside; those ahead of `first` lie below address 0.
struct Inside
{
    Inside(int start, int count, int table)
        : end(static_cast<int>(qBound<qint64>(0, qint64(table) - start, qBound(0, count, table)))),
          first(static_cast<int>(qBound<qint64>(0, -qint64(start), end)))
    {
    }

    int end; // ahead of first, which is worked out from it
    int first;
};

/// The bytes of `out`, grown to at least `size`. What is new is not initialised.
inline char *grown(QByteArray &out, int size)
{
    if (out.size() < size)
        out.resize(size);
    return out.data();
}

} // namespace image
