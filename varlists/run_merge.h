// SPDX-License-Identifier: MIT
/// \file
/// Merges neighbouring runs of bits or registers into requests.

#pragma once

#include <QtCore/QtGlobal>

namespace modbus_driver {

/// Takes runs in order of their starts. A request spans at most the limit, bridging gaps of any size; a run
/// that lies inside the current request needs none of its own.
class RunMerge
{
public:
    /// What a run did to the current request.
    enum Effect { LiesInside, Widens, Opens };

    /// Requests of registers, or, with `elementsOfUnit` 8, of whole bytes of bits. `limit` counts the
    /// elements of runs; it is checked before the rounding to bytes. Below 1 only what lies inside joins.
    RunMerge(int limit, int elementsOfUnit) : m_limit(qMax(0, limit)), m_unit(elementsOfUnit) {}

    /// The next run: `length` elements from `start` on.
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
