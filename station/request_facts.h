// SPDX-License-Identifier: MIT
/// \file
/// What fault selectors may ask of a request, whichever frames the connection carries.

#pragma once

/// One request in short. Written by whoever reads the frame, read by the faults.
struct RequestFacts
{
    int unit = 0;     ///< 0 is broadcast
    int function = 0; ///< Modbus function code; in remote frames the access byte, 0 read and 1 write
    int address = -1; ///< first address as sent, -1 when the request has none
    int count = 0;    ///< addresses from there on
};
