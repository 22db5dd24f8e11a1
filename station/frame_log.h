// SPDX-License-Identifier: MIT
/// \file
/// Prints the frames that a station receives and sends, and the values that masters write. Frames have the
/// format of Wireshark's text import, as in the trace of modbus-panel. Used on the station's thread.

#pragma once

#include "line_output.h"
#include "simulated_station.h"

/// Prints each write of a master to `output`, as "written 1/hr:100=7".
void printWrites(SimulatedStation &station, LineOutput &output);

/// Prints each frame to `output`. I marks a frame to the station, O a frame from it.
void printFrames(SimulatedStation &station, LineOutput &output);
