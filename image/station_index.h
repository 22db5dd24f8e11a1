// SPDX-License-Identifier: MIT
/// \file
/// Finds per-station records by their key. extendList is the truth, and it is the host's as much as the driver's: a
/// host may append to it, or clear it and fill it again. The index remembers where records were, compares what it
/// finds with the list, and reads the whole list again when they differ. The caller holds imageMutex, except while a
/// remote reply is stored.
///
///     list    [ A ][ B ][ C ] ... [ K ][ L ] [ M ][ N ]
///               |                        |     appended since the last call: added to the index first
///             first                    last
///
///     1. Are `first` and `last` still at the same place in memory, with the same keys?
///        If not, the list was cleared: read it again.
///     2. The table has a position for the key. Does the record there have this key?
///        If not, the record was changed in place: read the list again.
///     3. The table has no position. Does the table have nine records, evenly spread, where they are now?
///        If not, some record was changed in place: read the list again.

#pragma once

#include <QtCore/QList>
#include <QtCore/QVector>

#include "../driver/api/records.h"

namespace modbus_driver {

/// The key of a per-station record.
struct StationKey
{
    int station;
    int area;
    int address;
};

inline bool hasKey(const EXTENDVAR &record, const StationKey &key)
{
    return record.address == key.address && record.station == key.station && record.area == key.area;
}

class StationIndex
{
public:
    /// The position of the first record with this key, or -1.
    int find(const QList<EXTENDVAR> &list, const StationKey &key);

    /// No two records that find() has seen have the same key, so any record with a key is the first one.
    bool isDistinct() const { return m_distinct; }

private:
    /// One place of the table: the position of a record, -1 when free, and the hash of the key that it had.
    struct Place
    {
        int position = -1;
        uint hash = 0;
    };

    /// A record as the index has seen it: its place in memory, and its key.
    struct Landmark
    {
        const EXTENDVAR *record = nullptr;
        StationKey key = {0, 0, 0};

        void set(const EXTENDVAR &seen);
        bool matches(const EXTENDVAR &now) const { return record == &now && hasKey(now, key); }
    };

    bool landmarksMatch(const QList<EXTENDVAR> &list) const
    {
        return m_indexed <= list.size() && m_first.matches(list.at(0)) &&
               m_last.matches(list.at(m_indexed - 1));
    }
    bool samplesMatch(const QList<EXTENDVAR> &list) const;
    int neighbour(const StationKey &key) const;
    int findByTable(const QList<EXTENDVAR> &list, const StationKey &key);
    void update(const QList<EXTENDVAR> &list);
    void readAgain(const QList<EXTENDVAR> &list);
    void addTail(const QList<EXTENDVAR> &list);
    void add(const QList<EXTENDVAR> &list, int position);
    int search(const QList<EXTENDVAR> &list, const StationKey &key) const;
    int home(uint hash) const { return static_cast<int>(quint64(hash) * uint(m_table.size()) >> 32); }
    int after(int place) const { return place + 1 < m_table.size() ? place + 1 : 0; }

    QVector<Place> m_table; ///< open addressing: a key is in the row of taken places that begins at its home
    int m_indexed = 0;      ///< so many records are in the table: the list's first ones
    bool m_distinct = true;
    Landmark m_first, m_last;            ///< the first and the last record in the table
    int m_found = 0, m_foundAddress = 0; ///< position and address of the record that was asked for last
};

} // namespace modbus_driver
