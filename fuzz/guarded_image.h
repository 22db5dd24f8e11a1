// SPDX-License-Identifier: MIT
// An image of its own, in arrays of exactly the size that the packing routines are promised, so that
// AddressSanitizer notices a step beside them. In the driver's object it would land in a neighbour.

#pragma once

#include "script.h"

namespace guardedImage {

/// Stores the reply as bits and as registers, as the request in flight says.
void store(QByteArray *reply);

/// One call of a packing routine.
void pack(Script *script);

} // namespace guardedImage
