// SPDX-License-Identifier: MIT
#include "station_values.h"

#include "../driver/api/steps/driver_object.h"
#include "../driver/api/steps/image_access.h"

namespace modbus_driver {

namespace {

StationIndex listIndex; // of extendList; imageMutex

int append(const StationKey &key)
{
    EXTENDVAR record;
    record.station = key.station;
    record.area = key.area;
    record.address = key.address;
    record.value = QByteArray(4, '\0');
    PLC_driver.extendList.append(record);
    return PLC_driver.extendList.size() - 1;
}

int findOrAppend(const StationKey &key)
{
    const int found = listIndex.find(PLC_driver.extendList, key);
    return found >= 0 ? found : append(key);
}

} // namespace

StationValues::Found StationValues::find(const StationKey &key)
{
    const int position = findOrAppend(key);
    QList<EXTENDVAR> &list = PLC_driver.extendList;
    return {position, listIndex.isDistinct() ? static_cast<uint>(list.size()) : 0u, list.begin()};
}

} // namespace modbus_driver

int ExtendFindSameVar(int station, int area, int address)
{
    return modbus_driver::findOrAppend({station, area, address});
}
