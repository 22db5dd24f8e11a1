// SPDX-License-Identifier: MIT
#include "station_index.h"

#include "../driver/api/codes.h"
#include "../driver/base/arithmetic.h"

namespace modbus_driver {

namespace {

/// Results of a search that found no record: the table has no slot for the key, or the record of its slot has
/// another key now.
enum { Absent = -1, Changed = -2 };

const int sampleSteps = 8; // there are nine samples

StationKey keyOf(const EXTENDVAR &record)
{
    return {record.station, record.area, record.address};
}

/// Gives neighbouring addresses, and equal addresses of neighbouring stations, hashes that differ in all
/// bits.
uint hashOf(const StationKey &key)
{
    const uint table = static_cast<uint>(key.station) * 31u + static_cast<uint>(key.area);
    const uint mixed = static_cast<uint>(key.address) * 0x9E3779B1u + table * 0x85EBCA6Bu;
    return (mixed ^ mixed >> 15) * 0x2C1B3C6Du;
}

/// The table is rebuilt before more than four fifths of its slots are used. It then has 1.75 slots for each
/// record. So it needs 10 to 14 bytes for each record.
bool isNearlyFull(int records, int slots)
{
    return records >= slots / 5 * 4;
}

int slotsFor(int records)
{
    return records + records / 4 * 3 + 16;
}

} // namespace

void StationIndex::Snapshot::set(const EXTENDVAR &now)
{
    record = &now;
    key = keyOf(now);
}

int StationIndex::find(const QList<EXTENDVAR> &list, const StationKey &key)
{
    if (m_indexed == 0 || m_indexed != list.size() || !endsMatch(list))
        update(list);
    const int expected = expectedPosition(key);
    const bool isThere = expected >= 0 && expected < list.size() && hasKey(list.at(expected), key);
    m_found = isThere && m_distinct ? expected : findByTable(list, key);
    m_foundAddress = key.address;
    return m_found;
}

/// The position of the record if all records between it and the one found last were made in order of address.
/// A panel that reads its values one by one then needs no hash table: 22 instead of 33 ns (driver-bench,
/// panel_read/1_register).
int StationIndex::expectedPosition(const StationKey &key) const
{
    const int distance = wrapped(qint64(key.address) - m_foundAddress);
    return wrapped(qint64(m_found) + (isBitArea(key.area) ? distance / 8 : distance));
}

int StationIndex::findByTable(const QList<EXTENDVAR> &list, const StationKey &key)
{
    int found = search(list, key);
    if (found >= 0 || (found == Absent && samplesMatch(list)))
        return found;
    rebuild(list);
    found = search(list, key);
    return qMax(found, int(Absent));
}

bool StationIndex::samplesMatch(const QList<EXTENDVAR> &list) const
{
    const int last = list.size() - 1;
    const int steps = qMin(last, sampleSteps);
    for (int step = 0; step <= steps; ++step) {
        const int i = steps == 0 ? last : static_cast<int>(qint64(last) * step / steps);
        const int found = search(list, keyOf(list.at(i)));
        if (found < 0 || found > i)
            return false;
    }
    return true;
}

void StationIndex::update(const QList<EXTENDVAR> &list)
{
    if (m_indexed == 0 || !endsMatch(list) || isNearlyFull(list.size(), m_table.size()))
        rebuild(list);
    else
        addNewRecords(list);
}

void StationIndex::rebuild(const QList<EXTENDVAR> &list)
{
    *this = StationIndex();
    m_table = QVector<Slot>(slotsFor(list.size()));
    addNewRecords(list);
}

void StationIndex::addNewRecords(const QList<EXTENDVAR> &list)
{
    for (; m_indexed < list.size(); ++m_indexed)
        add(list, m_indexed);
    if (m_indexed == 0)
        return;
    m_first.set(list.at(0));
    m_last.set(list.at(m_indexed - 1));
}

/// Of several records with the same key, the table has the first.
void StationIndex::add(const QList<EXTENDVAR> &list, int position)
{
    const StationKey key = keyOf(list.at(position));
    if (search(list, key) >= 0) {
        m_distinct = false;
        return;
    }
    const uint hash = hashOf(key);
    int at = firstSlot(hash);
    while (m_table.at(at).position >= 0)
        at = nextSlot(at);
    m_table[at].position = position;
    m_table[at].hash = hash;
}

int StationIndex::search(const QList<EXTENDVAR> &list, const StationKey &key) const
{
    const Slot *const table = m_table.constData();
    const uint hash = hashOf(key);
    int result = Absent;
    for (int at = firstSlot(hash); table[at].position >= 0; at = nextSlot(at)) {
        if (table[at].hash != hash)
            continue;
        if (hasKey(list.at(table[at].position), key))
            return table[at].position;
        result = Changed;
    }
    return result;
}

} // namespace modbus_driver
