// SPDX-License-Identifier: MIT
// The least that a host can do: one call, answered without any record.
#include <modbus_tcpip_rtu_m.h>

#if MODBUS_TCPIP_RTU_M_VERSION < 0x010000
#error "the headers do not say which version they are"
#endif

int main()
{
    return QueryFinishFlag() == 1 ? 0 : 1;
}
