// SPDX-License-Identifier: MIT
/// \file
/// What makes the look-up of a per-station value a matter of constant time. The list of records stays
/// the truth; the index only remembers where keys were found in it (station_values.cpp).

#pragma once

#include <QtCore/QHash>

/// \cond the driver's own

/// The key of a per-station record.
struct StationValueKey
{
    int station;
    int area;
    int address;
};

inline bool operator==(const StationValueKey &a, const StationValueKey &b)
{
    return a.address == b.address && a.station == b.station && a.area == b.area;
}

/// Spreads keys of neighbouring addresses over the whole range.
inline uint qHash(const StationValueKey &key)
{
    const uint table = static_cast<uint>(key.station) * 31u + static_cast<uint>(key.area);
    return static_cast<uint>(key.address) + table * 0x9E3779B1u;
}

/// A record that the index has seen: where it lay in memory, and its key.
struct StationValueLandmark
{
    const void *record = nullptr;
    StationValueKey key = {0, 0, 0};
};

/// Positions of the first `indexed` records of the list; the first record of a key wins. The landmarks are
/// the first and the last of them: they change when somebody clears the list, even if it is filled again.
struct StationValueIndex
{
    QHash<StationValueKey, int> positions;
    int indexed = 0;
    bool distinct = true; ///< no key was met twice, so any record with a key is the first with it
    StationValueLandmark first, last;
    int foundAt = 0, foundAddress = 0; ///< position and address of the record found last
};

/// \endcond
