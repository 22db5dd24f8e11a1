// SPDX-License-Identifier: MIT
#include "connection.h"

#include "recovery.h"

#include <QtNetwork/QNetworkProxy>

#include <chrono>
#include <thread>

namespace {

const int sliceMs = 50;          // how long a wait goes on after a stop
const int longestDrainTimes = 5; // time-outs after which a stream that never gets quiet is dropped

} // namespace

Connection::Connection(const ConnectionOptions &options, const LinkTrace &trace,
                       const std::atomic<bool> &stop)
    : m_options(options), m_trace(trace), m_stop(stop), m_link(options.backOff)
{
    m_socket.setProxy(QNetworkProxy::NoProxy);
    m_clock.start();
}

bool Connection::open()
{
    if (state() != LinkState::Connecting)
        return state() != LinkState::BackingOff;
    m_socket.connectToHost(m_options.host, m_options.port);
    if (!m_socket.waitForConnected(m_options.timeoutMs)) {
        const bool refused = m_socket.error() == QAbstractSocket::ConnectionRefusedError;
        dropConnection(refused ? LinkCause::Refused : LinkCause::NotReached);
        return false;
    }
    m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_link.opened();
    ++m_timesOpened;
    m_trace.comment(QStringLiteral("connected to %1:%2").arg(m_options.host).arg(m_options.port));
    return true;
}

Exchange Connection::exchange(const Protocol &request)
{
    Exchange exchange;
    exchange.before.unit = m_lastUnit;
    keepGap();
    resynchronise(&exchange.before);
    const int timesOpened = m_timesOpened;
    if (!open()) {
        exchange.cause = m_link.cause();
        return exchange;
    }
    exchange.before.reconnected = m_timesOpened > 1 && m_timesOpened != timesOpened;
    m_lastUnit = request.var.station;
    QElapsedTimer timer;
    timer.start();
    exchange.end = Exchange::NoReply;
    exchange.cause = m_doubt = transact(request, &exchange);
    exchange.microseconds = timer.nsecsElapsed() / 1000;
    if (m_doubt == LinkCause::Closed || m_doubt == LinkCause::BadHeader)
        dropConnection(m_doubt);
    else
        traceDoubt(exchange);
    m_lastEndMs = m_clock.elapsed();
    return exchange;
}

void Connection::keepGap() const
{
    const qint64 left = m_lastEndMs < 0 ? 0 : m_lastEndMs + m_options.gapMs - m_clock.elapsed();
    if (left > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(left));
}

bool Connection::isOpen()
{
    return state() != LinkState::Connecting && state() != LinkState::BackingOff;
}

/// Looks at what came since the previous exchange, and puts the stream back into step if it is in doubt.
void Connection::resynchronise(Aftermath *before)
{
    if (!isOpen())
        return;
    QElapsedTimer timer;
    timer.start();
    findUnaskedReplies(before);
    const LinkCause cause = m_doubt;
    const Recovery recovery = recoveryAfter(cause, m_options.drain && isConnected());
    if (recovery == Recovery::Drain)
        drain(cause, before);
    else if (recovery == Recovery::Drop)
        dropConnection(cause);
    if (recovery != Recovery::None)
        before->microseconds = timer.nsecsElapsed() / 1000;
    m_doubt = LinkCause::None;
}

void Connection::findUnaskedReplies(Aftermath *before)
{
    receive(0);
    before->lateReplies = discardReplies();
    if (m_doubt != LinkCause::None)
        return;
    if (before->lateReplies > 0 || !m_framing.rest().isEmpty())
        m_doubt = LinkCause::Unasked;
    else if (!isConnected())
        m_doubt = LinkCause::Closed;
}

/// Without a late reply the connection is dropped: the missing reply may come yet, and would look like the next answer.
void Connection::drain(LinkCause cause, Aftermath *before)
{
    waitUntilQuiet();
    before->lateReplies += discardReplies();
    m_framing.clear();
    if (isConnected() && before->lateReplies > 0)
        m_link.drained();
    else
        dropConnection(isConnected() ? cause : LinkCause::Closed);
}

/// Reads until nothing has come for as long as a reply may take, or the stream never gets quiet.
void Connection::waitUntilQuiet()
{
    QElapsedTimer whole;
    QElapsedTimer quiet;
    whole.start();
    quiet.start();
    while (quiet.elapsed() < m_options.timeoutMs && !m_stop && isConnected()) {
        const int had = m_framing.rest().size();
        receive(qMin<int>(sliceMs, m_options.timeoutMs));
        if (m_framing.rest().size() != had)
            quiet.restart();
        if (whole.elapsed() > longestDrainTimes * m_options.timeoutMs)
            return m_socket.abort();
    }
}

/// Throws away and counts the whole replies that have come in.
int Connection::discardReplies()
{
    int count = 0;
    QByteArray reply;
    ReplyFault fault = ReplyFault::None;
    if (m_options.remote) {
        count = m_framing.rest().isEmpty() ? 0 : 1;
        m_framing.clear();
    }
    while (m_framing.take(&reply, &fault) == ReplyFraming::Whole) {
        m_trace.reply(reply, QStringLiteral("late, thrown away"));
        ++count;
    }
    return count;
}

bool Connection::send(const Protocol &request)
{
    m_trace.request(request.frame);
    m_socket.write(request.frame.constData(), request.frameLength);
    while (m_socket.bytesToWrite() > 0 && m_socket.waitForBytesWritten(m_options.timeoutMs)) {}
    return m_socket.bytesToWrite() == 0 && isConnected();
}

/// Sends the request and fills in the exchange. Returns what went wrong.
LinkCause Connection::transact(const Protocol &request, Exchange *exchange)
{
    if (!send(request))
        return LinkCause::Closed;
    if (request.replyLength == 0) {
        exchange->end = Exchange::Sent;
        return LinkCause::None;
    }
    m_link.sent();
    return awaitReply(request, exchange);
}

LinkCause Connection::awaitReply(const Protocol &request, Exchange *exchange)
{
    QElapsedTimer timer;
    timer.start();
    while (takeReply(request, exchange) == ReplyFraming::Incomplete) {
        const int left = m_options.timeoutMs - static_cast<int>(timer.elapsed());
        if (m_stop)
            return LinkCause::Stopped;
        if (left <= 0)
            return m_framing.rest().isEmpty() ? LinkCause::Silent : LinkCause::CutOff;
        if (!isConnected())
            return LinkCause::Closed;
        receive(qMin(left, sliceMs));
    }
    return judge(request, exchange);
}

ReplyFraming::Result Connection::takeReply(const Protocol &request, Exchange *exchange)
{
    return m_options.remote ? m_framing.takeLength(request.replyLength, &exchange->reply)
                            : m_framing.take(&exchange->reply, &exchange->fault);
}

/// A whole reply, or bytes with an invalid header.
LinkCause Connection::judge(const Protocol &request, Exchange *exchange)
{
    if (exchange->fault != ReplyFault::None) {
        m_trace.comment(QStringLiteral("%1: %2").arg(replyFaultText(exchange->fault),
                                                     QString::fromLatin1(m_framing.rest().toHex(' '))));
        return LinkCause::BadHeader;
    }
    if (!m_options.remote)
        exchange->fault = checkReply(request.frame, exchange->reply);
    if (exchange->fault != ReplyFault::None) {
        m_trace.reply(exchange->reply, QStringLiteral("held back: ") + replyFaultText(exchange->fault));
        exchange->reply.clear();
        return LinkCause::HeldBack;
    }
    m_trace.reply(exchange->reply, QString());
    exchange->end = Exchange::Answered;
    m_link.answered();
    return LinkCause::None;
}

/// Bytes that lie in the socket's buffer do not end a wait, so all are taken out every time.
void Connection::receive(int waitMs)
{
    if (isConnected() && m_socket.bytesAvailable() == 0)
        m_socket.waitForReadyRead(waitMs);
    m_framing.append(m_socket.readAll());
}

void Connection::traceDoubt(const Exchange &exchange) const
{
    if (exchange.cause == LinkCause::None)
        return;
    const QString rest = QString::fromLatin1(m_framing.rest().toHex(' '));
    m_trace.comment(rest.isEmpty() ? linkCauseText(exchange.cause)
                                   : QStringLiteral("%1: %2").arg(linkCauseText(exchange.cause), rest));
}

void Connection::dropConnection(LinkCause cause)
{
    m_link.lost(cause, m_clock.elapsed());
    m_socket.abort();
    m_framing.clear();
    m_doubt = LinkCause::None;
    m_trace.comment(QStringLiteral("connection dropped: ") + linkCauseText(cause));
}
