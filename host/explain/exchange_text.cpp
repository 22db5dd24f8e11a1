// SPDX-License-Identifier: MIT
#include "exchange_text.h"

QString exceptionName(int code)
{
    switch (code) {
    case 1:
        return QStringLiteral("illegal function");
    case 2:
        return QStringLiteral("illegal data address");
    case 3:
        return QStringLiteral("illegal data value");
    case 4:
        return QStringLiteral("device failure");
    case 5:
        return QStringLiteral("acknowledged, still busy");
    case 6:
        return QStringLiteral("device busy");
    case 8:
        return QStringLiteral("memory parity error");
    case 10:
        return QStringLiteral("gateway path unavailable");
    case 11:
        return QStringLiteral("no response behind the gateway");
    default:
        return QStringLiteral("unknown exception");
    }
}

QString exchangeText(const Exchange &exchange)
{
    const int exception = exceptionCode(exchange.reply);
    if (exception >= 0)
        return QStringLiteral("exception %1: %2").arg(exception).arg(exceptionName(exception));
    if (exchange.fault != ReplyFault::None)
        return QStringLiteral("reply held back: %1").arg(replyFaultText(exchange.fault));
    switch (exchange.end) {
    case Exchange::Answered:
        return QStringLiteral("answered");
    case Exchange::Sent:
        return QStringLiteral("sent to all units, no reply comes");
    case Exchange::NoReply:
        return linkCauseText(exchange.cause);
    case Exchange::NotSent:
        return QStringLiteral("no link: %1").arg(linkCauseText(exchange.cause));
    }
    return QString();
}
