// SPDX-License-Identifier: MIT
/// \file
/// Finds per-station records by their key. The records are in extendList, which a host may change too: it may
/// append records, or clear the list and fill it again. The index is a hash table with the position of each
/// record. It compares each result with the list, and is rebuilt from the whole list when they differ. The
/// caller holds imageMutex, except while a remote reply is stored.
///
///     list    [ A ][ B ][ C ] ... [ K ][ L ] [ M ][ N ]
///               |                        |     appended since the last call: added to the index first
///             first                    last
///
///     1. Are `first` and `last` still at the same address in memory, with the same keys?
///        If not, the list was cleared: rebuild the index.
///     2. The table has a position for the key. Does the record there have this key?
///        If not, the record was changed in place: rebuild the index.
///     3. The table has no position for the key. Take nine records, evenly spread over the list. Does the
///        table have their positions? If not, some record was changed in place: rebuild the index.

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

    /// True while all records in the index have different keys. A record with a key is then the first one
    /// with it.
    bool isDistinct() const { return m_distinct; }

private:
    /// One slot of the hash table.
    struct Slot
    {
        int position = -1; ///< of the record in the list; -1: the slot is free
        uint hash = 0;     ///< of the key that the record had
    };

    /// The address in memory and the key of a record, as they were when the index was updated.
    struct Snapshot
    {
        const EXTENDVAR *record = nullptr;
        StationKey key = {0, 0, 0};

        void set(const EXTENDVAR &now);
        bool matches(const EXTENDVAR &now) const { return record == &now && hasKey(now, key); }
    };

    bool endsMatch(const QList<EXTENDVAR> &list) const
    {
        return m_indexed <= list.size() && m_first.matches(list.at(0)) &&
               m_last.matches(list.at(m_indexed - 1));
    }
    bool samplesMatch(const QList<EXTENDVAR> &list) const;
    int expectedPosition(const StationKey &key) const;
    int findByTable(const QList<EXTENDVAR> &list, const StationKey &key);
    void update(const QList<EXTENDVAR> &list);
    void rebuild(const QList<EXTENDVAR> &list);
    void addNewRecords(const QList<EXTENDVAR> &list);
    void add(const QList<EXTENDVAR> &list, int position);
    int search(const QList<EXTENDVAR> &list, const StationKey &key) const;
    int firstSlot(uint hash) const { return static_cast<int>(quint64(hash) * uint(m_table.size()) >> 32); }
    int nextSlot(int slot) const { return slot + 1 < m_table.size() ? slot + 1 : 0; }

    QVector<Slot> m_table; ///< open addressing with linear probing
    int m_indexed = 0;     ///< number of records in the table: these are the first ones of the list
    bool m_distinct = true;
    Snapshot m_first, m_last;            ///< of the first and the last record in the table
    int m_found = 0, m_foundAddress = 0; ///< result and address of the last search
};

} // namespace modbus_driver
