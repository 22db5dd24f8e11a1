// SPDX-License-Identifier: MIT
#include "exception_text.h"

#include "../link/exception_codes.h"

QString exceptionName(int code)
{
    switch (code) {
    case ExceptionIllegalFunction:
        return QStringLiteral("illegal function");
    case ExceptionIllegalAddress:
        return QStringLiteral("illegal data address");
    case ExceptionIllegalValue:
        return QStringLiteral("illegal data value");
    case ExceptionDeviceFailure:
        return QStringLiteral("device failure");
    case ExceptionAcknowledged:
        return QStringLiteral("acknowledged, still busy");
    case ExceptionBusy:
        return QStringLiteral("device busy");
    case ExceptionMemoryParity:
        return QStringLiteral("memory parity error");
    case ExceptionGatewayPath:
        return QStringLiteral("gateway path unavailable");
    case ExceptionGatewayTarget:
        return QStringLiteral("no response behind the gateway");
    default:
        return QStringLiteral("unknown exception");
    }
}
