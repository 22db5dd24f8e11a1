// SPDX-License-Identifier: MIT
#include "exchange_text.h"

#include "exception_text.h"
#include "filled.h"
#include "status_text.h"
#include "variable.h"

#include "../link/exception_codes.h"

#include "../../driver/api/codes.h"
#include "../../driver/base/modbus_wire.h"

#include <tuple>

using namespace modbus_driver;
using namespace modbus_driver::wire;

namespace {

const int deviceItself = 255;    // unit identifier
const int countedInTable = 9999; // five digits, the first of them the table's

/// Area, first number and name of the tables in manuals that count from 1.
const std::tuple<int, int, const char *> tablesFromOne[] = {
    {AreaDiscreteInputs, 10001, "discrete input"},
    {AreaInputRegisters, 30001, "input register"},
    {AreaHoldingRegisters, 40001, "holding register"},
};

/// The usual cause is a device that answers under another unit identifier than the one that was asked.
QString otherUnitText(const RW_VAR &access, const QByteArray &reply, int base)
{
    const int unit = byteAt(reply, UnitAt);
    QString text = filled("unit %1 answered a request to unit %2; try %1/%3:%4", unit, access.station,
                          areaName(access.area), access.startAddress + base);
    if (unit == deviceItself)
        text += QStringLiteral(" (unit 255 is the device that has the connection, not one behind it)");
    return text;
}

/// Manuals that count from 1, with the table's digit in front, are the usual cause of an illegal address.
QString countedFromOneText(const RW_VAR &access, int base)
{
    for (const auto &[area, first, name] : tablesFromOne) {
        const int address = access.startAddress + base - first; // counted from 0
        if (requestArea(access.area) == area && address >= 0 && address < countedInTable)
            return filled("; manuals that count %1 as the first %2 mean %3:%4", first, name,
                          areaName(access.area), address + base);
    }
    return QString();
}

} // namespace

QString exchangeText(const Exchange &exchange)
{
    const int exception = exceptionCode(exchange.reply);
    if (exception >= 0)
        return filled("exception %1: %2", exception, exceptionName(exception));
    if (exchange.fault != ReplyFault::None)
        return filled("reply held back: %1", replyFaultText(exchange.fault));
    if (exchange.end == Exchange::Answered)
        return QStringLiteral("answered");
    if (exchange.end == Exchange::Sent)
        return QStringLiteral("sent to all units, no reply comes");
    return filled(exchange.end == Exchange::NotSent ? "no link: %1" : "%1", linkCauseText(exchange.cause));
}

QString failureText(const RW_VAR &access, const Exchange &exchange, int status, int base)
{
    if (exchange.end == Exchange::Answered && exceptionCode(exchange.reply) < 0)
        return filled("%1 (driver status %2)", statusText(status), status);
    if (exchange.fault == ReplyFault::OtherUnit)
        return otherUnitText(access, exchange.heldBack, base);
    if (exceptionCode(exchange.reply) == ExceptionIllegalAddress)
        return exchangeText(exchange) + countedFromOneText(access, base);
    return exchangeText(exchange);
}
