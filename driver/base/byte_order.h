// SPDX-License-Identifier: MIT
/// \file
/// Converts between the wire (high byte first) and registers in memory (low byte first).

#pragma once

namespace modbus_driver {

/// Copies `registers` registers of two bytes and swaps the bytes of each. A number below 1 copies nothing.
/// `to` and `from` need no alignment and must not overlap.
void swapRegisterBytes(void *to, const void *from, int registers);

/// Copies `values` 32-bit values and reverses the four bytes of each.
void reverseBytes32(void *to, const void *from, int values);

} // namespace modbus_driver
