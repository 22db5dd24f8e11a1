// SPDX-License-Identifier: MIT
// The least that a host can do: one call, answered without any record.
#include <modbus_tcpip_rtu_m.h>

int main()
{
    return QueryFinishFlag() == 1 ? 0 : 1;
}
