// SPDX-License-Identifier: MIT
/// \file
/// Clips an access to an image array, and makes room in the host's array.

#pragma once

#include <QtCore/QByteArray>

namespace modbus_driver {

/// `count` elements from `start` on, clipped to a table of `table` elements: the elements `first` up to, not
/// including, `end` lie inside; those ahead of `first` lie below address 0.
struct ClippedRange
{
    ClippedRange(int start, int count, int table)
        : end(static_cast<int>(qBound<qint64>(0, qint64(table) - start, qBound(0, count, table)))),
          first(static_cast<int>(qBound<qint64>(0, -qint64(start), end)))
    {
    }

    int end; // declared ahead of first, which is computed from it
    int first;
};

/// The bytes of `out`, which is resized to at least `size`. New bytes are not initialised.
inline char *ensureSize(QByteArray &out, int size)
{
    if (out.size() < size)
        out.resize(size);
    return out.data();
}

} // namespace modbus_driver
