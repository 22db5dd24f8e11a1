// SPDX-License-Identifier: MIT
#include "station_values.h"

#include "../driver/arithmetic.h"
#include "../driver/driver_object.h"
#include "../varlists/areas.h"

namespace {

/// Records looked at, evenly spread, before an absent key is believed.
const int probes = 8;

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

bool stands(const StationValueLandmark &mark, const EXTENDVAR &record)
{
    return mark.record == &record && mark.key == keyOf(record);
}

/// False when the list was cleared, whatever it holds now.
bool landmarksStand(const StationValueIndex &index, const QList<EXTENDVAR> &list)
{
    return index.indexed == 0 || (index.indexed <= list.size() && stands(index.first, list.at(0)) &&
                                  stands(index.last, list.at(index.indexed - 1)));
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
bool isTrue(const StationValueIndex &index, const QList<EXTENDVAR> &list)
{
    const int last = list.size() - 1;
    const int steps = qMin(last, probes);
    for (int step = 0; step <= steps; ++step) {
        const int i = steps == 0 ? last : static_cast<int>(qint64(last) * step / steps);
        if (!knows(index, list, i))
            return false;
    }
    return true;
}

/// True when the record of this key is known to be the one at this position.
bool liesAt(const StationValueIndex &index, const QList<EXTENDVAR> &list, const StationValueKey &key,
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
    if (found >= 0 ? keyOf(list.at(found)) == key : isTrue(*index, list))
        return found;
    indexAnew(index, list);
    return index->positions.value(key, -1);
}

/// The position of the record of this key, made when absent. Not inlined, to keep the way past it short.
__attribute__((noinline)) int findOrAppend(StationValueKey key)
{
    QList<EXTENDVAR> &list = PLC_driver.extendList;
    const int found = find(&PLC_driver.extendIndex, list, key);
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

int ExtendFindSameVar(int station, int area, int address)
{
    return image::StationValues(station, area).position(address);
}

namespace image {

StationValues::StationValues(int station, int area)
    : m_station(station), m_area(area), m_foundAt(PLC_driver.extendIndex.foundAt),
      m_foundAddress(PLC_driver.extendIndex.foundAddress)
{
    if (!landmarksStand(PLC_driver.extendIndex, PLC_driver.extendList))
        indexAnew(&PLC_driver.extendIndex, PLC_driver.extendList);
}

// Looks first where the record is if those between were made one after the other.
int StationValues::position(int address)
{
    StationValueIndex &index = PLC_driver.extendIndex;
    const StationValueKey key = {m_station, m_area, address};
    const int distance = arithmetic::wrapped(qint64(address) - m_foundAddress);
    const int records = varlists::isBitArea(m_area) ? distance / 8 : distance;
    const int expected = arithmetic::wrapped(qint64(m_foundAt) + records);
    m_foundAt = liesAt(index, PLC_driver.extendList, key, expected) ? expected : findOrAppend(key);
    m_foundAddress = address;
    index.foundAt = m_foundAt;
    index.foundAddress = address;
    return m_foundAt;
}

QByteArray &StationValues::value(int address)
{
    return PLC_driver.extendList[position(address)].value;
}

} // namespace image
