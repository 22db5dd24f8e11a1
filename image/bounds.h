// SPDX-License-Identifier: MIT
/// \file
/// Clips an access to the size of an image array, and enlarges the host's byte array.

#pragma once

#include <QtCore/QByteArray>

namespace modbus_driver {

/// Clips the elements 0 to count - 1, of which element k has the address start + k, to a table with the
/// addresses 0 to table - 1. The elements from `first` to end - 1 are inside the table. Those before `first`
/// have addresses below 0.
struct ClippedRange
{
    ClippedRange(int start, int count, int table)
        : end(static_cast<int>(qBound<qint64>(0, qint64(table) - start, qBound(0, count, table)))),
          first(static_cast<int>(qBound<qint64>(0, -qint64(start), end)))
    {
    }

    int end; // declared before first, which is computed from it
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
