// SPDX-License-Identifier: MIT
// A host that includes X11's headers between Qt's and the driver's. Compiling is the test.
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QMutex>
#include <QtCore/QString>

#include <atomic>

#define Status int
#define None 0L
#define Bool int

#include "modbus_tcpip_rtu_m.h"

Status statusOf(QByteArray *reply)
{
    return DataCom(reply, reply->size())->status == modbus_driver::StatusDone ? 1 : None;
}
