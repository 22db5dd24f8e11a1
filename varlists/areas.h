// SPDX-License-Identifier: MIT
/// \file
/// Register area codes: the one place that names them.

#pragma once

#include "../driver/export.h"

/// Where a variable lives. Addresses count from 0 and go on the wire as they are.
enum Area {
    AreaCoils = 0,
    AreaDiscreteInputs = 1,
    AreaInputRegisterBit = 2,   ///< one bit, address register * 16 + bit
    AreaHoldingRegisterBit = 3, ///< one bit, address register * 16 + bit
    AreaInputRegisters = 4,
    AreaHoldingRegisters = 5,
    AreaInputPairs = 6,   ///< 32-bit values, high word in the first register
    AreaHoldingPairs = 7, ///< 32-bit values, high word in the first register
};

namespace varlists {

/// Coils and discrete inputs; every other area lives in registers.
inline bool isBitArea(int area)
{
    return area == AreaCoils || area == AreaDiscreteInputs;
}

} // namespace varlists

/// The area that a read request for this area is sent on: 2 and 6 give 4, 3 and 7 give 5, any other
/// value itself.
MODBUS_API int getPlcReg(int area);
