// SPDX-License-Identifier: MIT
/// \file
/// Merges neighbouring runs of bits or registers into requests.

#pragma once

#include <QtCore/QtGlobal>

namespace modbus_driver {

/// Takes runs sorted by their starts, and merges them into requests of at most the limit. Gaps between the
/// runs of a request may have any size. A run inside the current request does not change it.
class RunMerge
{
public:
    /// How a run changed the requests: not at all, it made the current one longer, or it began a new one.
    enum Effect { Unchanged, Extended, Started };

    /// `elementsOfUnit` is 1 for registers, 8 for bits, which are requested in whole bytes. `limit` counts
    /// registers or bits. It is checked before rounding to bytes. With a limit below 1 only a run inside the
    /// current request is merged.
    RunMerge(int limit, int elementsOfUnit) : m_limit(qMax(0, limit)), m_unit(elementsOfUnit) {}

    /// Takes the next run: `length` elements from `start` on.
    Effect take(int start, int length);

    /// The current request: its first element, and its length in units.
    int start() const;
    int length() const;

private:
    const int m_limit, m_unit;
    bool m_open = false;
    qint64 m_start = 0, m_end = 0; // in elements; 64 bits, so that no end overflows
};

} // namespace modbus_driver
