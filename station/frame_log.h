// SPDX-License-Identifier: MIT
/// \file
/// Prints what a station receives, sends and stores: frames in the form that Wireshark's text import reads,
/// as modbus-panel's trace does, and the values that masters write. Used on the station's thread.

#pragma once

#include "line_output.h"
#include "simulated_station.h"

/// Prints each write of a master to `output`, as "written 1/hr:100=7".
void printWrites(SimulatedStation &station, LineOutput &output);

/// Prints each frame to `output`: I goes to the station, O comes from it.
void printFrames(SimulatedStation &station, LineOutput &output);
