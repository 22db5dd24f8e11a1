// SPDX-License-Identifier: MIT
#include "../api/steps/driver_object.h"

Modbus_TCPIP_RTU_M PLC_driver;

int LB = 0;
int LW = 0;
int RWI = 0;

void passRetValue(const RW_VAR &from, RW_VAR &to)
{
    to = from;
    to.data.clear();
}
