// SPDX-License-Identifier: MIT
#include "reply_check.h"

#include "../../driver/base/modbus_wire.h"

using namespace modbus_driver::wire;

namespace {

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
    switch (fault) {
    case ReplyFault::None:
        return QStringLiteral("none");
    case ReplyFault::BadLength:
        return QStringLiteral("bad length field");
    case ReplyFault::OtherProtocol:
        return QStringLiteral("other protocol id");
    case ReplyFault::OtherTransaction:
        return QStringLiteral("other transaction id");
    case ReplyFault::OtherUnit:
        return QStringLiteral("other unit");
    case ReplyFault::OtherFunction:
        return QStringLiteral("other function");
    case ReplyFault::WrongByteCount:
        return QStringLiteral("wrong byte count");
    case ReplyFault::WrongEcho:
        return QStringLiteral("other address or value echoed");
    case ReplyFault::Ambiguous:
        return QStringLiteral("several different replies");
    }
    return QString();
}

ReplyFault checkReply(const QByteArray &request, const QByteArray &reply)
{
    if (wordAt(reply, TransactionAt) != wordAt(request, TransactionAt))
        return ReplyFault::OtherTransaction;
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
