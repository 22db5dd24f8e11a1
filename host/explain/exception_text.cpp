// SPDX-License-Identifier: MIT
#include "exception_text.h"

#include "../link/exception_codes.h"

namespace {

struct Name
{
    int code;
    const char *name;
};

const Name names[] = {
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

} // namespace

QString exceptionName(int code)
{
    for (const Name &of : names) {
        if (of.code == code)
            return QString::fromLatin1(of.name);
    }
    return QStringLiteral("unknown exception");
}
