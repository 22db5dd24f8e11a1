// SPDX-License-Identifier: MIT
#include "reply_check.h"

#include "../../driver/base/modbus_wire.h"

#include <iterator>

using namespace modbus_driver::wire;

namespace {

/// By ReplyFault.
const char *const faultTexts[] = {
    "none",
    "bad length field",
    "other protocol id",
    "other transaction id",
    "other unit",
    "other function",
    "wrong byte count",
    "other address or value echoed",
    "several different replies",
};
static_assert(std::size(faultTexts) == std::size_t(ReplyFault::Ambiguous) + 1, "each fault has a text");

/// Data bytes that the answer to a read holds: bits packed by eight, two bytes a register.
int bytesAsked(const QByteArray &request)
{
    const int quantity = wordAt(request, ValueAt);
    return byteAt(request, FunctionAt) <= ReadDiscreteInputs ? (quantity + 7) / 8 : 2 * quantity;
}

ReplyFault checkData(const QByteArray &request, const QByteArray &reply)
{
    const int count = byteAt(reply, ReadByteCountAt);
    const bool agrees = count == reply.size() - ReadReplyHeader && count == bytesAsked(request);
    return agrees ? ReplyFault::None : ReplyFault::WrongByteCount;
}

/// A write is answered by its address and its value or quantity.
ReplyFault checkEcho(const QByteArray &request, const QByteArray &reply)
{
    if (reply.size() != WriteEchoLength)
        return ReplyFault::WrongByteCount;
    const int echoed = reply.size() - AddressAt;
    return reply.mid(AddressAt, echoed) == request.mid(AddressAt, echoed) ? ReplyFault::None
                                                                          : ReplyFault::WrongEcho;
}

} // namespace

QString replyFaultText(ReplyFault fault)
{
    return QString::fromLatin1(faultTexts[static_cast<std::size_t>(fault)]);
}

ReplyFault checkReply(const QByteArray &request, const QByteArray &reply)
{
    if (byteAt(reply, UnitAt) != byteAt(request, UnitAt))
        return ReplyFault::OtherUnit;
    const int function = byteAt(request, FunctionAt);
    if (byteAt(reply, FunctionAt) == (function | ExceptionFlag))
        return reply.size() == ExceptionReplyLength ? ReplyFault::None : ReplyFault::WrongByteCount;
    if (byteAt(reply, FunctionAt) != function)
        return ReplyFault::OtherFunction;
    return isReadFunction(function) ? checkData(request, reply) : checkEcho(request, reply);
}

int exceptionCode(const QByteArray &reply)
{
    const bool isException =
        reply.size() == ExceptionReplyLength && (byteAt(reply, FunctionAt) & ExceptionFlag);
    return isException ? byteAt(reply, ExceptionCodeAt) : -1;
}
