// SPDX-License-Identifier: MIT
#include "../driver/api/codes.h"
#include "../driver/api/steps/list_building.h"

using namespace modbus_driver;

int getPlcReg(int area)
{
    return requestArea(area);
}
