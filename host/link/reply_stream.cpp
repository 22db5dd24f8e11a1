// SPDX-License-Identifier: MIT
#include "reply_stream.h"

#include "../../driver/api/codes.h"
#include "../../driver/base/modbus_wire.h"

using namespace modbus_driver;
using namespace modbus_driver::wire;

namespace {

enum { MostShown = 64 };           // bytes in a trace comment
enum { MostAtOnce = 4096 };        // bytes of one call of receive
enum { MostPerRequest = 1 << 16 }; // bytes between two requests; a thousand late replies are fewer

/// Numbers of two runs within a short time lie far apart.
unsigned seedOfNumbers()
{
    QElapsedTimer clock;
    clock.start();
    return static_cast<unsigned>(clock.msecsSinceReference()) * 40503;
}

} // namespace

ReplyStream::ReplyStream(TcpSocket &socket, const LinkTrace &trace, bool remote)
    : m_socket(socket), m_trace(trace), m_remote(remote), m_numbers(seedOfNumbers())
{
}

void ReplyStream::clear()
{
    m_framing.clear();
    m_bytesReceived = 0;
    m_broadcastFunction = 0;
}

QByteArray ReplyStream::expectReplyTo(const Protocol &request)
{
    QByteArray frame = request.frame.left(request.frameLength);
    m_bytesReceived = 0;
    m_expectedLength = request.replyLength;
    if (m_remote)
        return frame;
    putWord(frame.data() + TransactionAt, m_numbers.next());
    if (request.replyLength == 0)
        m_broadcastFunction = byteAt(frame, FunctionAt);
    return frame;
}

LinkCause ReplyStream::receive(const Deadline &deadline)
{
    char bytes[MostAtOnce];
    int size = 0;
    const LinkCause cause = m_socket.receive(bytes, sizeof bytes, &size, deadline);
    if (cause != LinkCause::None)
        return cause;
    m_framing.append(bytes, size);
    m_bytesReceived += size;
    return m_bytesReceived > MostPerRequest ? LinkCause::Flood : LinkCause::None;
}

ReplyStream::Found ReplyStream::take(QByteArray *reply, ReplyFault *fault)
{
    for (;;) {
        const ReplyFraming::Result result =
            m_remote ? m_framing.takeLength(qMax(1, m_expectedLength), reply) : m_framing.take(reply, fault);
        if (result != ReplyFraming::Whole) {
            reply->clear(); // what was discarded before must not look like the answer
            return result == ReplyFraming::Incomplete ? Nothing : BadHeader;
        }
        if (m_remote)
            return Unnumbered;
        if (isBroadcastEcho(*reply)) {
            m_trace.reply(*reply, QStringLiteral("echo of a broadcast"));
            continue;
        }
        switch (m_numbers.take(static_cast<quint16>(wordAt(*reply, TransactionAt)))) {
        case TransactionNumbers::Current:
            return Answer;
        case TransactionNumbers::Zero:
            return m_numbers.areEchoed() ? Foreign : Unnumbered;
        case TransactionNumbers::Foreign:
            return Foreign;
        case TransactionNumbers::Old:
            discard(*reply);
        }
    }
}

/// A broadcast has no reply, but some stations send one.
bool ReplyStream::isBroadcastEcho(const QByteArray &reply)
{
    const bool isDue = m_broadcastFunction != 0 && byteAt(reply, UnitAt) == StationBroadcast &&
                       (byteAt(reply, FunctionAt) & ~ExceptionFlag) == m_broadcastFunction;
    if (isDue)
        m_broadcastFunction = 0;
    return isDue;
}

void ReplyStream::clearNumber(QByteArray *reply) const
{
    if (!m_remote)
        putWord(reply->data() + TransactionAt, 0);
}

void ReplyStream::discard(const QByteArray &reply)
{
    m_trace.reply(reply, QStringLiteral("late or unasked, thrown away"));
    // Nobody takes the list while a peer floods each new connection.
    if (m_lateUnits.size() < MostPerRequest / ExceptionReplyLength)
        m_lateUnits << (m_remote ? -1 : byteAt(reply, UnitAt));
}

ReplyStream::Found ReplyStream::discardAll()
{
    Found worst = Nothing;
    QByteArray reply;
    ReplyFault fault = ReplyFault::None;
    for (Found found = take(&reply, &fault); found != Nothing; found = take(&reply, &fault)) {
        if (found == BadHeader)
            return BadHeader;
        discard(reply);
        worst = found;
    }
    return worst;
}

QString ReplyStream::restText() const
{
    return QString::fromLatin1(m_framing.rest().left(MostShown).toHex(' '));
}
