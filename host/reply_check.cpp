// SPDX-License-Identifier: MIT
#include "reply_check.h"

namespace {

enum { Transaction = 0, Unit = 6, Function = 7, ByteCount = 8, Exception = 8, Address = 8, Quantity = 10 };
enum { ExceptionLength = 9, ReadHeader = 9, EchoLength = 12 };
const int exceptionFlag = 0x80;

int byteAt(const QByteArray &frame, int index)
{
    return index < frame.size() ? static_cast<quint8>(frame.at(index)) : -1;
}

int wordAt(const QByteArray &frame, int index)
{
    return byteAt(frame, index) * 256 + byteAt(frame, index + 1);
}

bool isRead(int function)
{
    return function >= 1 && function <= 4;
}

/// Data bytes that the answer to a read holds: bits packed by eight, two bytes a register.
int bytesAsked(const QByteArray &request)
{
    const int quantity = wordAt(request, Quantity);
    return byteAt(request, Function) <= 2 ? (quantity + 7) / 8 : 2 * quantity;
}

ReplyFault checkData(const QByteArray &request, const QByteArray &reply)
{
    const int count = byteAt(reply, ByteCount);
    const bool agrees = count == reply.size() - ReadHeader && count == bytesAsked(request);
    return agrees ? ReplyFault::None : ReplyFault::WrongByteCount;
}

/// A write is answered by its address and its value or quantity.
ReplyFault checkEcho(const QByteArray &request, const QByteArray &reply)
{
    if (reply.size() != EchoLength)
        return ReplyFault::WrongByteCount;
    const int echoed = EchoLength - Address;
    return reply.mid(Address, echoed) == request.mid(Address, echoed) ? ReplyFault::None
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
    }
    return QString();
}

ReplyFault checkReply(const QByteArray &request, const QByteArray &reply)
{
    if (wordAt(reply, Transaction) != wordAt(request, Transaction))
        return ReplyFault::OtherTransaction;
    if (byteAt(reply, Unit) != byteAt(request, Unit))
        return ReplyFault::OtherUnit;
    const int function = byteAt(request, Function);
    if (byteAt(reply, Function) == (function | exceptionFlag))
        return reply.size() == ExceptionLength ? ReplyFault::None : ReplyFault::WrongByteCount;
    if (byteAt(reply, Function) != function)
        return ReplyFault::OtherFunction;
    return isRead(function) ? checkData(request, reply) : checkEcho(request, reply);
}

int exceptionCode(const QByteArray &reply)
{
    const bool isException = reply.size() == ExceptionLength && (byteAt(reply, Function) & exceptionFlag);
    return isException ? byteAt(reply, Exception) : -1;
}
