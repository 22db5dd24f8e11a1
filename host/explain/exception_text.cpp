// SPDX-License-Identifier: MIT
#include "exception_text.h"

#include "../link/exception_codes.h"

#include <QtCore/QMap>

QString exceptionName(int code)
{
    static const QMap<int, const char *> names = {
        {ExceptionIllegalFunction, "illegal function"},
        {ExceptionIllegalAddress, "illegal data address"},
        {ExceptionIllegalValue, "illegal data value"},
        {ExceptionDeviceFailure, "device failure"},
        {ExceptionAcknowledged, "acknowledged, still busy"},
        {ExceptionBusy, "device busy"},
        {ExceptionMemoryParity, "memory parity error"},
        {ExceptionGatewayPath, "gateway path unavailable"},
        {ExceptionGatewayTarget, "no response behind the gateway"},
    };
    return QString::fromLatin1(names.value(code, "unknown exception"));
}
