// SPDX-License-Identifier: MIT
// A panel's variables: coils, bits of registers, registers and 32-bit values, spread over the address range.

#pragma once

#include "api/records.h"

#include <QtCore/QList>

namespace bench {

QList<VAR_ITEM> pollItems(int count, int stations);

} // namespace bench
