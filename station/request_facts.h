// SPDX-License-Identifier: MIT
/// \file
/// The fields of a request that fault selectors compare, for Modbus and for remote frames. Plain data.

#pragma once

/// Filled by modbus_frames.h and remote_peer.h, read by fault_choice.h.
struct RequestFacts
{
    int unit = 0;     ///< 0 is broadcast
    int function = 0; ///< Modbus function code; in remote frames the access byte, 0 read and 1 write
    int address = -1; ///< first address as sent, -1 when the request has none
    int count = 0;    ///< number of addresses from `address` on
};
