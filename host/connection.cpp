// SPDX-License-Identifier: MIT
#include "connection.h"

#include <QtNetwork/QNetworkProxy>

#include <chrono>
#include <thread>

namespace {

const int sliceMs = 50;          // how long a wait goes on after a stop
const int longestDrainTimes = 5; // time-outs after which a stream that never gets quiet is dropped

} // namespace

Connection::Connection(const ConnectionOptions &options, const Trace &trace, const std::atomic<bool> &stop)
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
        lose(refused ? LinkCause::Refused : LinkCause::NotReached);
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
    settle(&exchange.before);
    const int timesOpened = m_timesOpened;
    if (!open()) {
        exchange.cause = m_link.cause();
        return exchange;
    }
    exchange.before.reconnected = m_timesOpened > 1 && m_timesOpened != timesOpened;
    m_lastUnit = request.var.station;
    send(request, &exchange);
    m_lastEndMs = m_clock.elapsed();
    return exchange;
}

void Connection::keepGap() const
{
    const qint64 left = m_lastEndMs < 0 ? 0 : m_lastEndMs + m_options.gapMs - m_clock.elapsed();
    if (left > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(left));
}

/// Finds what came since the last exchange, and gets the stream back into step if it is in doubt.
void Connection::settle(Aftermath *before)
{
    if (state() == LinkState::Connecting || state() == LinkState::BackingOff)
        return;
    QElapsedTimer timer;
    timer.start();
    receive(0);
    before->lateReplies = takeLate();
    if (m_suspect == LinkCause::None && (before->lateReplies > 0 || !m_framing.rest().isEmpty()))
        suspect(LinkCause::Unasked);
    if (!isConnected()) {
        lose(m_suspect == LinkCause::None ? LinkCause::Closed : m_suspect);
    } else if (m_suspect != LinkCause::None && m_options.drain) {
        drain();
        before->lateReplies += takeLate();
        m_framing.clear();
        if (before->lateReplies == 0 && isConnected())
            lose(m_suspect); // what is missing may come yet, and would look like the next answer
    } else if (m_suspect != LinkCause::None) {
        lose(m_suspect);
    }
    if (m_suspect != LinkCause::None)
        before->microseconds = timer.nsecsElapsed() / 1000;
    m_suspect = LinkCause::None;
}

/// Reads until nothing has come for as long as a reply may take.
void Connection::drain()
{
    QElapsedTimer whole;
    QElapsedTimer quiet;
    whole.start();
    quiet.start();
    while (quiet.elapsed() < m_options.timeoutMs && !m_stop) {
        const int had = m_framing.rest().size();
        receive(qMin<int>(sliceMs, m_options.timeoutMs));
        if (m_framing.rest().size() != had)
            quiet.restart();
        if (!isConnected() || whole.elapsed() > longestDrainTimes * m_options.timeoutMs)
            return lose(isConnected() ? m_suspect : LinkCause::Closed);
    }
    m_link.drained();
}

/// Throws away and counts the whole replies that have come in.
int Connection::takeLate()
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

void Connection::send(const Protocol &request, Exchange *exchange)
{
    QElapsedTimer timer;
    timer.start();
    m_trace.request(request.frame);
    m_socket.write(request.frame.constData(), request.frameLength);
    while (m_socket.bytesToWrite() > 0 && m_socket.waitForBytesWritten(m_options.timeoutMs)) {}
    exchange->end = Exchange::NoReply;
    if (m_socket.bytesToWrite() > 0 || !isConnected()) {
        exchange->cause = LinkCause::Closed;
        lose(LinkCause::Closed);
    } else if (request.replyLength == 0) {
        exchange->end = Exchange::Sent;
    } else {
        m_link.sent();
        awaitReply(request, exchange);
    }
    exchange->microseconds = timer.nsecsElapsed() / 1000;
}

void Connection::awaitReply(const Protocol &request, Exchange *exchange)
{
    QElapsedTimer timer;
    timer.start();
    for (;;) {
        const ReplyFraming::Result result = m_options.remote
                                                ? m_framing.takeLength(request.replyLength, &exchange->reply)
                                                : m_framing.take(&exchange->reply, &exchange->fault);
        if (result != ReplyFraming::Incomplete)
            return judge(request, exchange);
        const int left = m_options.timeoutMs - static_cast<int>(timer.elapsed());
        if (left <= 0 || m_stop) {
            const bool began = !m_framing.rest().isEmpty();
            exchange->cause = m_stop ? LinkCause::Stopped : began ? LinkCause::CutOff : LinkCause::Silent;
            return suspect(exchange->cause);
        }
        if (!isConnected()) {
            exchange->cause = LinkCause::Closed;
            return lose(LinkCause::Closed);
        }
        receive(qMin(left, sliceMs));
    }
}

/// A reply has come, or bytes that can be none.
void Connection::judge(const Protocol &request, Exchange *exchange)
{
    if (exchange->fault != ReplyFault::None) {
        exchange->cause = LinkCause::BadHeader;
        m_trace.comment(QStringLiteral("%1: %2").arg(replyFaultText(exchange->fault),
                                                     QString::fromLatin1(m_framing.rest().toHex(' '))));
        return lose(LinkCause::BadHeader);
    }
    if (!m_options.remote)
        exchange->fault = checkReply(request.frame, exchange->reply);
    if (exchange->fault != ReplyFault::None) {
        exchange->cause = LinkCause::HeldBack;
        m_trace.reply(exchange->reply, QStringLiteral("held back: ") + replyFaultText(exchange->fault));
        exchange->reply.clear();
        return suspect(LinkCause::HeldBack);
    }
    m_trace.reply(exchange->reply);
    exchange->end = Exchange::Answered;
    m_link.answered();
}

/// Bytes that lie in the socket's buffer do not end a wait, so all are taken out every time.
void Connection::receive(int waitMs)
{
    if (isConnected() && m_socket.bytesAvailable() == 0)
        m_socket.waitForReadyRead(waitMs);
    m_framing.append(m_socket.readAll());
}

void Connection::suspect(LinkCause cause)
{
    m_suspect = cause;
    if (m_framing.rest().isEmpty())
        m_trace.comment(linkCauseText(cause));
    else
        m_trace.comment(QStringLiteral("%1: %2").arg(linkCauseText(cause),
                                                     QString::fromLatin1(m_framing.rest().toHex(' '))));
}

void Connection::lose(LinkCause cause)
{
    m_link.lost(cause, m_clock.elapsed());
    m_socket.abort();
    m_framing.clear();
    m_trace.comment(QStringLiteral("connection dropped: ") + linkCauseText(cause));
}
