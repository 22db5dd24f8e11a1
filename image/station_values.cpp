// SPDX-License-Identifier: MIT
#include "station_values.h"

#include "../driver/api/codes.h"
#include "../driver/api/steps/driver_object.h"
#include "../driver/api/steps/image_access.h"
#include "../driver/base/arithmetic.h"

#include <QtCore/QHash>

namespace modbus_driver {

namespace {

/// Records compared, evenly spread, before a missing key is trusted.
const int samples = 8;

/// The key of a per-station record.
struct StationValueKey
{
    int station;
    int area;
    int address;
};

bool operator==(const StationValueKey &a, const StationValueKey &b)
{
    return a.address == b.address && a.station == b.station && a.area == b.area;
}

/// Spreads keys of neighbouring addresses over the whole range.
uint qHash(const StationValueKey &key)
{
    const uint table = static_cast<uint>(key.station) * 31u + static_cast<uint>(key.area);
    return static_cast<uint>(key.address) + table * 0x9E3779B1u;
}

/// A record that the index has seen: where it was in memory, and its key.
struct StationValueLandmark
{
    const void *record = nullptr;
    StationValueKey key = {0, 0, 0};
};

/// Positions of the first `indexed` records of the list; the first record of a key wins. The landmarks are
/// the first and the last of them: they change when the list is cleared, even if it is filled again.
struct StationValueIndex
{
    QHash<StationValueKey, int> positions;
    int indexed = 0;
    bool distinct = true; ///< no key was met twice, so any record with a key is the first with it
    StationValueLandmark first, last;
    int foundAt = 0, foundAddress = 0; ///< position and address of the record found last
};

StationValueIndex listIndex; // finds records of extendList; imageMutex

StationValueKey keyOf(const EXTENDVAR &record)
{
    const StationValueKey key = {record.station, record.area, record.address};
    return key;
}

StationValueLandmark landmark(const EXTENDVAR &record)
{
    StationValueLandmark made;
    made.record = &record;
    made.key = keyOf(record);
    return made;
}

bool stillMatches(const StationValueLandmark &mark, const EXTENDVAR &record)
{
    return mark.record == &record && mark.key == keyOf(record);
}

/// False when the list was cleared, whatever it holds now.
bool landmarksMatch(const StationValueIndex &index, const QList<EXTENDVAR> &list)
{
    return index.indexed == 0 || (index.indexed <= list.size() && stillMatches(index.first, list.at(0)) &&
                                  stillMatches(index.last, list.at(index.indexed - 1)));
}

/// Takes in what was appended since the last look.
void indexTail(StationValueIndex *index, const QList<EXTENDVAR> &list)
{
    if (index->indexed == list.size())
        return;
    for (; index->indexed < list.size(); ++index->indexed) {
        const StationValueKey key = keyOf(list.at(index->indexed));
        if (index->positions.contains(key))
            index->distinct = false;
        else
            index->positions.insert(key, index->indexed);
    }
    index->first = landmark(list.at(0));
    index->last = landmark(list.at(index->indexed - 1));
}

void indexAnew(StationValueIndex *index, const QList<EXTENDVAR> &list)
{
    *index = StationValueIndex();
    indexTail(index, list);
}

bool knows(const StationValueIndex &index, const QList<EXTENDVAR> &list, int i)
{
    return index.positions.value(keyOf(list.at(i)), list.size()) <= i;
}

/// False when a sample shows records that somebody changed in their place.
bool sampleMatches(const StationValueIndex &index, const QList<EXTENDVAR> &list)
{
    const int last = list.size() - 1;
    const int steps = qMin(last, samples);
    for (int step = 0; step <= steps; ++step) {
        const int i = steps == 0 ? last : static_cast<int>(qint64(last) * step / steps);
        if (!knows(index, list, i))
            return false;
    }
    return true;
}

/// True when the record of this key is known to be the one at this position.
bool isRecordAt(const StationValueIndex &index, const QList<EXTENDVAR> &list, const StationValueKey &key,
                int position)
{
    return position >= 0 && position < list.size() && keyOf(list.at(position)) == key && index.distinct &&
           index.indexed == list.size();
}

/// The position of the first record of this key, or -1.
int find(StationValueIndex *index, const QList<EXTENDVAR> &list, const StationValueKey &key)
{
    indexTail(index, list);
    const int found = index->positions.value(key, -1);
    if (found >= 0 ? keyOf(list.at(found)) == key : sampleMatches(*index, list))
        return found;
    indexAnew(index, list);
    return index->positions.value(key, -1);
}

/// The position of the record of this key, made when absent. Not inlined, to keep the way past it short.
__attribute__((noinline)) int findOrAppend(StationValueKey key)
{
    QList<EXTENDVAR> &list = PLC_driver.extendList;
    const int found = find(&listIndex, list, key);
    if (found >= 0)
        return found;
    EXTENDVAR record;
    record.station = key.station;
    record.area = key.area;
    record.address = key.address;
    record.value = QByteArray(4, '\0');
    list.append(record);
    return list.size() - 1;
}

} // namespace

StationValues::StationValues(int station, int area)
    : m_station(station), m_area(area), m_foundAt(listIndex.foundAt), m_foundAddress(listIndex.foundAddress)
{
    if (!landmarksMatch(listIndex, PLC_driver.extendList))
        indexAnew(&listIndex, PLC_driver.extendList);
}

// Looks first where the record is if those between were made one after the other.
int StationValues::position(int address)
{
    StationValueIndex &index = listIndex;
    const StationValueKey key = {m_station, m_area, address};
    const int distance = wrapped(qint64(address) - m_foundAddress);
    const int records = isBitArea(m_area) ? distance / 8 : distance;
    const int expected = wrapped(qint64(m_foundAt) + records);
    m_foundAt = isRecordAt(index, PLC_driver.extendList, key, expected) ? expected : findOrAppend(key);
    m_foundAddress = address;
    index.foundAt = m_foundAt;
    index.foundAddress = address;
    return m_foundAt;
}

QByteArray &StationValues::value(int address)
{
    return PLC_driver.extendList[position(address)].value;
}

} // namespace modbus_driver

int ExtendFindSameVar(int station, int area, int address)
{
    return modbus_driver::StationValues(station, area).position(address);
}
