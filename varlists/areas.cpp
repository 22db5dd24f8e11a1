// SPDX-License-Identifier: MIT
#include "areas.h"

int getPlcReg(int area)
{
    switch (area) {
    case AreaInputRegisterBit:
    case AreaInputPairs:
        return AreaInputRegisters;
    case AreaHoldingRegisterBit:
    case AreaHoldingPairs:
        return AreaHoldingRegisters;
    default:
        return area;
    }
}
