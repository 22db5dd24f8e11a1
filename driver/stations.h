// SPDX-License-Identifier: MIT
/// \file
/// Stations that the communication cycle passes over. Callable from any thread, from the call-backs
/// too; each takes stationMutex.

#pragma once

#include "export.h"

extern "C" {

/// Switches polling of a station: enable 0 excludes it, 1 includes it again, any other value does
/// nothing. A station below 0 includes all stations again, whatever enable says. Queued requests of an
/// excluded station stay queued.
MODBUS_API void EnCommStation(int station, int enable);

/// The same as EnCommStation.
MODBUS_API void EnableEthernet(int station, int enable);

/// True while the station is excluded.
MODBUS_API bool Ethernetcontains(int station);
}
