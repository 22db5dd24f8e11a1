// SPDX-License-Identifier: MIT
// A host that includes X11's macros between Qt's headers and the driver's, and has names of its own which the
// driver's sources use. Compiling is the test.
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QMutex>
#include <QtCore/QString>

#include <atomic>

#define Status int
#define None 0L
#define Bool int

struct Area
{
    int code;
};
typedef Area Outcome;
uint qHash(const Area &area)
{
    return static_cast<uint>(area.code);
}
namespace varlists {
Outcome image = {None};
}

#include "modbus_tcpip_rtu_m.h"

using namespace modbus_driver;
using varlists::image;

Status statusOf(QByteArray *reply, const Area &area)
{
    return qHash(area) == 0 ? image.code : DataCom(reply, reply->size())->status - StatusDone;
}
