// SPDX-License-Identifier: MIT
#include "script.h"
#include "targets.h"

#include "../host/link/reply_framing.h"

#include <QtCore/QList>

namespace {

/// What came off a stream, in order.
struct Taken
{
    QList<QByteArray> replies;
    bool isOutOfStep = false;
    ReplyFault fault = ReplyFault::None;

    void takeAll(ReplyFraming *framing)
    {
        QByteArray reply;
        ReplyFraming::Result result = ReplyFraming::Incomplete;
        while (!isOutOfStep && (result = framing->take(&reply, &fault)) == ReplyFraming::Whole)
            replies.append(reply);
        isOutOfStep |= result == ReplyFraming::BadHeader;
    }
};

/// Whole frames, so that streams stay in step, with any bytes between them now and then.
QByteArray stream(Script *script)
{
    QByteArray bytes;
    for (int n = script->byte() % 8; n > 0; --n) {
        const QByteArray body = script->bytes(script->byte());
        if (script->byte() % 8 != 0)
            bytes.append(QByteArray::fromHex("0000000000")).append(static_cast<char>(body.size()));
        bytes.append(body);
    }
    return bytes;
}

Taken takeInPieces(Script *script, const QByteArray &bytes, ReplyFraming *framing)
{
    Taken taken;
    for (int from = 0; from < bytes.size() && !taken.isOutOfStep;) {
        const int size = 1 + script->byte() % 32;
        framing->append(bytes.mid(from, size));
        taken.takeAll(framing);
        from += size;
    }
    return taken;
}

void judge(const QByteArray &request, const QByteArray &reply)
{
    const ReplyFault fault = checkReply(request, reply);
    require(!replyFaultText(fault).isEmpty(), "a fault is one that has a name");
    require(fault != ReplyFault::None || (reply.at(6) == request.at(6) && (reply.at(7) & 0x7F) == request.at(7)),
            "no foreign reply is taken for an answer");
    require(exceptionCode(reply) >= -1, "an exception code is a number, or there is none");
}

} // namespace

void fuzzFraming(const quint8 *bytes, std::size_t size)
{
    Script script(bytes, size);
    QByteArray request = script.bytes(12).leftJustified(12, '\0');
    request[7] = static_cast<char>(request.at(7) & 0x7F);
    const QByteArray whole = stream(&script);

    ReplyFraming atOnce, inPieces;
    Taken wanted;
    atOnce.append(whole);
    wanted.takeAll(&atOnce);
    const Taken taken = takeInPieces(&script, whole, &inPieces);

    require(taken.replies == wanted.replies, "where a stream is cut changes none of its replies");
    require(taken.isOutOfStep == wanted.isOutOfStep, "nor whether it is in step");
    require(taken.fault == wanted.fault, "nor what is wrong with it");
    QByteArray joined;
    for (const QByteArray &reply : taken.replies) {
        require(reply.size() >= 8 && reply.size() <= 260, "a reply has the length of a Modbus frame");
        joined.append(reply);
        judge(request, reply);
    }
    require(whole.startsWith(joined), "replies are the stream's bytes, in order");
    require(taken.isOutOfStep || joined + inPieces.rest() == whole, "what was not taken is still there");
}
