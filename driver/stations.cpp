// SPDX-License-Identifier: MIT
#include "api/host_calls.h"
#include "api/steps/driver_object.h"

#include <QtCore/QMutexLocker>

void EnCommStation(int station, int enable)
{
    QMutexLocker lock(&PLC_driver.stationMutex);
    if (station < 0)
        PLC_driver.disabledStations.clear();
    else if (enable == 0)
        PLC_driver.disabledStations.insert(station, 0);
    else if (enable == 1)
        PLC_driver.disabledStations.remove(station);
}

void EnableEthernet(int station, int enable)
{
    EnCommStation(station, enable);
}

bool Ethernetcontains(int station)
{
    QMutexLocker lock(&PLC_driver.stationMutex);
    return PLC_driver.disabledStations.contains(station);
}
