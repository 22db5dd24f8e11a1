// SPDX-License-Identifier: MIT
// Exchanges over TCP with a station on this machine, by the driver and by a client that always sends the same
// request.

#pragma once

namespace bench {

/// Prints, as JSON, the rate and the CPU time of `exchanges` reads of `registers` registers from unit 1 at
/// 127.0.0.1:port, with or without the driver. False, with a line on stderr, when the station does not answer.
bool printLoopback(bool hasDriver, int port, int registers, int exchanges);

} // namespace bench
