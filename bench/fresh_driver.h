// SPDX-License-Identifier: MIT
// The driver as a host finds it after loading, with one settings record for all measurements.

#pragma once

#include "modbus_tcpip_rtu_m.h"

namespace bench {

/// Where values are kept: in the register image that all stations share, or in records of each station.
enum ImageMode { Shared = 0, PerStation = 1 };

const char *nameOf(ImageMode mode);

/// Empties queues, records and image. Blocks of 125 registers, station 1, writes go to the station.
CommSettings &freshDriver(ImageMode mode);

RW_VAR readOf(int area, int start, int length);

} // namespace bench
