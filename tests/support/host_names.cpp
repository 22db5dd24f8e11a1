// SPDX-License-Identifier: MIT
// A host that has names of its own which the driver's sources use. Compiling is the test.
#include <QtCore/QHash>

struct Status
{
    int code;
};
enum Area { AreaCoils = 7, Outcome };
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

int codeOf(const QHash<Status, Area> &areas)
{
    return areas.value(Status{LB}, Outcome) + image + StatusDone + ::AreaCoils + modbus_driver::AreaCoils;
}
