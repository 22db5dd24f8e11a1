// SPDX-License-Identifier: MIT
#include "station_values.h"

#include "../driver/driver_object.h"

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
        if (i >= 0 && !knows(index, list, i))
            return false;
    }
    return true;
}

int findIndexed(const StationValueIndex &index, const QList<EXTENDVAR> &list, const StationValueKey &key)
{
    const int position = index.positions.value(key, -1);
    return position >= 0 && keyOf(list.at(position)) == key ? position : -1;
}

/// True when the record of this key is known to be the one at this position.
bool liesAt(int position, const StationValueKey &key)
{
    const StationValueIndex &index = PLC_driver.extendIndex;
    const QList<EXTENDVAR> &list = PLC_driver.extendList;
    return position < list.size() && index.distinct && index.indexed == list.size() &&
           keyOf(list.at(position)) == key;
}

/// The position of the first record of this key, or -1.
int find(const StationValueKey &key)
{
    StationValueIndex &index = PLC_driver.extendIndex;
    const QList<EXTENDVAR> &list = PLC_driver.extendList;
    if (landmarksStand(index, list))
        indexTail(&index, list);
    else
        indexAnew(&index, list);
    const int position = findIndexed(index, list, key);
    if (position >= 0 || isTrue(index, list))
        return position;
    indexAnew(&index, list);
    return findIndexed(index, list, key);
}

} // namespace

int ExtendFindSameVar(int station, int area, int address)
{
    const StationValueKey key = {station, area, address};
    const int position = find(key);
    if (position >= 0)
        return position;
    EXTENDVAR record;
    record.station = station;
    record.area = area;
    record.address = address;
    record.value = QByteArray(4, '\0');
    PLC_driver.extendList.append(record);
    return PLC_driver.extendList.size() - 1;
}

namespace image {

QByteArray &StationRun::value(int address)
{
    const StationValueKey key = {m_station, m_area, address};
    const bool asExpected = m_position >= 0 && liesAt(m_position + m_stride, key);
    m_position = asExpected ? m_position + m_stride : ExtendFindSameVar(m_station, m_area, address);
    return PLC_driver.extendList[m_position].value;
}

} // namespace image
