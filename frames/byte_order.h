// SPDX-License-Identifier: MIT
/// \file
/// Between the wire, high byte first, and everything else here, low byte first.

#pragma once

/// \cond the driver's own

namespace byteOrder {

/// Copies `registers` registers of two bytes, each turned round. A number below 1 copies nothing. Neither side
/// need be aligned; the two must not overlap.
void turnRegisters(void *to, const void *from, int registers);

/// The same for pairs of registers: four bytes each, turned round as a whole.
void turnPairs(void *to, const void *from, int pairs);

} // namespace byteOrder

/// \endcond
