// SPDX-License-Identifier: MIT
/// \file
/// The constants of the driver's own remote frame, for the driver, the host and the station. All fields are
/// high byte first. The length of the frame is sent modulo 256.

#pragma once

namespace modbus_driver {
namespace remoteWire {

/// The first byte of each field of a request.
enum Position {
    LengthAt = 0,
    HostIdAt = 1,
    AccessAt = 2, ///< an AccessKind
    LinkIdAt = 3,
    StationAt = 4,
    AreaAt = 5,         ///< two bytes
    StartAddressAt = 7, ///< four bytes
    DataLengthAt = 11,  ///< two bytes
    SubIndexAt = 13,    ///< four bytes
    AuxAt = 17,         ///< four bytes
    ValueAt = 21,       ///< value bytes, in writes; the byte sum follows
};

/// Numbers of bytes.
enum Length {
    ShortestFrame = 22, ///< all fields and the byte sum
    ReadReplyHeader = 9,
    WriteReplyLength = 12,
};

} // namespace remoteWire
} // namespace modbus_driver
