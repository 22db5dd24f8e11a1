// SPDX-License-Identifier: MIT
#include "station_values.h"

#include "../driver/driver_object.h"

namespace {

/// Records looked at before an absent key is believed: all of a short list, an even sample of a long one.
const int probes = 64;

StationValueKey keyOf(const EXTENDVAR &record)
{
    const StationValueKey key = {record.station, record.area, record.address};
    return key;
}

/// Takes in what was appended since the last look.
void indexTail(StationValueIndex *index, const QList<EXTENDVAR> &list)
{
    for (; index->indexed < list.size(); ++index->indexed) {
        const StationValueKey key = keyOf(list.at(index->indexed));
        if (!index->positions.contains(key))
            index->positions.insert(key, index->indexed);
    }
}

void indexAnew(StationValueIndex *index, const QList<EXTENDVAR> &list)
{
    index->positions.clear();
    index->indexed = 0;
    indexTail(index, list);
}

bool knows(const StationValueIndex &index, const QList<EXTENDVAR> &list, int i)
{
    return index.positions.value(keyOf(list.at(i)), list.size()) <= i;
}

/// False when somebody replaced records behind the index's back.
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

/// The position of the first record of this key, or -1.
int find(const StationValueKey &key)
{
    StationValueIndex &index = PLC_driver.extendIndex;
    const QList<EXTENDVAR> &list = PLC_driver.extendList;
    if (index.indexed > list.size())
        indexAnew(&index, list);
    indexTail(&index, list);
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

QByteArray &stationValue(int station, int area, int address)
{
    const int index = ExtendFindSameVar(station, area, address);
    return PLC_driver.extendList[index].value;
}

} // namespace image
