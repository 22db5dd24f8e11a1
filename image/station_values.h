// SPDX-License-Identifier: MIT
/// \file
/// The values that are kept per station while CommSettings::multiStation is nonzero. The caller holds
/// imageMutex, except while a remote reply is stored.

#pragma once

#include "station_index.h"

#include <QtCore/QByteArray>

namespace modbus_driver {

/// Access to the values of one station and area, for a caller that needs several of them.
///
/// Records of neighbouring addresses were usually made one after the other, so they are neighbours in the
/// list too. The caller gives the position where it expects the next record. The index is searched only when
/// the list has another record there.
class StationValues
{
public:
    /// The position to begin with: no record is expected there, so the index is searched.
    enum { NoPosition = -1 };

    /// `area` is a request area: 0, 1, 4 or 5.
    StationValues(int station, int area) : m_station(station), m_area(area) {}

    /// The value of an address, expected at `*position` of the list. A missing record is appended. Sets
    /// `*position` to the position of the record. The reference is valid until the next call.
    QByteArray &value(int address, int *position)
    {
        if (static_cast<uint>(*position) >= m_trusted ||
            !hasKey(m_records[*position], {m_station, m_area, address}))
            lookUp(address, position);
        return m_records[*position].value;
    }

private:
    /// The result of a search, with the state of the list.
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
    QList<EXTENDVAR>::iterator m_records; ///< the begin of the list
    uint m_trusted = 0; ///< before this position, a record with a key is the first one with that key
};

} // namespace modbus_driver
