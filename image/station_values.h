// SPDX-License-Identifier: MIT
/// \file
/// The values kept per station, used while CommSettings::multiStation is nonzero. The caller holds imageMutex, except
/// while a remote reply is stored.

#pragma once

#include "station_index.h"

#include <QtCore/QByteArray>

namespace modbus_driver {

/// Values of one station and area, asked for one after the other while extendList belongs to the caller.
///
/// Records of neighbours were mostly made one after the other, so they are neighbours in the list too. The caller says
/// where it expects the next record; only where another record is there the index is asked.
class StationValues
{
public:
    /// A position to begin with, where no record is expected.
    enum { Anywhere = -1 };

    /// `area` is a request area: 0, 1, 4 or 5.
    StationValues(int station, int area) : m_station(station), m_area(area) {}

    /// The value of an address, expected at `*position` of the list, and made when absent. Sets `*position` to where
    /// it is. The reference is valid until the next call.
    QByteArray &value(int address, int *position)
    {
        if (static_cast<uint>(*position) >= m_trusted ||
            !hasKey(m_records[*position], {m_station, m_area, address}))
            lookUp(address, position);
        return m_records[*position].value;
    }

private:
    /// Where a record is, in the list as it is now.
    struct Found
    {
        int position;
        uint trusted;
        QList<EXTENDVAR>::iterator records;
    };

    static Found find(const StationKey &key);

    void lookUp(int address, int *position)
    {
        const Found found = find({m_station, m_area, address});
        *position = found.position;
        m_trusted = found.trusted;
        m_records = found.records;
    }

    const int m_station, m_area;
    QList<EXTENDVAR>::iterator m_records; ///< of the whole list
    uint m_trusted = 0; ///< a record ahead of this position that has a key is the first with it
};

} // namespace modbus_driver
