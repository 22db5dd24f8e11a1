// SPDX-License-Identifier: MIT
// A host that has names of its own which the driver's sources use. Compiling is the test.
#include <QtCore/qglobal.h>

struct Status
{
    int code;
};
enum Area { AreaCoils = 7 };
struct Outcome
{
    int code;
};
typedef int RequestOrigin;
uint qHash(const Status &status)
{
    return static_cast<uint>(status.code);
}
namespace varlists {
RequestOrigin image = AreaCoils;
}

#include "modbus_tcpip_rtu_m.h"

using varlists::image;
using namespace modbus_driver;

uint codeOf(int code)
{
    return qHash(Status{code}) + uint(image + Outcome{code}.code + StatusDone + ::AreaCoils + modbus_driver::AreaCoils);
}
