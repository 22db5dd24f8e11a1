// SPDX-License-Identifier: MIT
#include "connection.h"

namespace {

const int turnaroundMs = 100; // that units need after a broadcast

/// A stream gets quiet between late replies. Bytes that come more often than this, for longer than so many quiet times,
/// are a flood; a pause of a busy machine is none.
const int mostTimes = 5;

} // namespace

Connection::Connection(const ConnectionOptions &options, const LinkTrace &trace,
                       const std::atomic<bool> &stop)
    : m_options(options), m_trace(trace), m_socket(stop), m_replies(m_socket, trace, options.remote),
      m_link(options.backOff)
{
    m_clock.start();
}

bool Connection::open()
{
    if (state() != LinkState::Connecting)
        return isOpen();
    LinkCause cause = m_socket.connectTo(m_options.host, m_options.port, m_options.timeoutMs);
    if (cause == LinkCause::None) {
        m_link.opened(m_clock.elapsed());
        ++m_timesOpened;
        m_replies.clear();
        m_trace.comment(QStringLiteral("connected to %1:%2").arg(m_options.host).arg(m_options.port));
        if (!m_replies.numbers().areEchoed())
            cause = listenUntilQuiet(m_options.quietMs);
    }
    if (cause != LinkCause::None && cause != LinkCause::Stopped)
        dropConnection(cause);
    return isOpen();
}

Exchange Connection::exchange(const Protocol &request)
{
    Exchange exchange;
    exchange.before.unit = m_lastUnit;
    pause(m_gap);
    QElapsedTimer timer;
    timer.start();
    const bool isInStep = m_drainDue == LinkCause::None;
    resynchronise();
    const int timesOpened = m_timesOpened;
    if (!waitForLink()) {
        exchange.cause = m_link.cause();
        return exchange;
    }
    exchange.before.reconnected = m_timesOpened > 1 && m_timesOpened != timesOpened;
    if (!isInStep || exchange.before.reconnected)
        exchange.before.microseconds = timer.nsecsElapsed() / 1000;
    m_lastUnit = request.var.station;
    timer.start();
    exchange.cause = transact(request, &exchange);
    exchange.microseconds = timer.nsecsElapsed() / 1000;
    exchange.before.lateUnits = m_replies.takeLateUnits();
    const bool isSilent = exchange.cause == LinkCause::Silent && m_replies.bytesReceived() == 0;
    m_silentInRow = isSilent ? m_silentInRow + 1 : 0;
    recoverFrom(exchange.cause == LinkCause::None ? m_doubt : exchange.cause);
    m_doubt = LinkCause::None;
    m_gap = Deadline(m_options.gapMs);
    return exchange;
}

/// Opens the link, and waits out back-offs that are short enough. False when the request cannot be sent.
bool Connection::waitForLink()
{
    if (isOpen())
        return true;
    const Deadline limit(qMax(m_options.patienceMs, m_options.backOff.floorMs));
    while (!open()) {
        const int left = static_cast<int>(qMax<qint64>(0, m_link.retryAtMs() - m_clock.elapsed()));
        const bool isTooLong = left > limit.left();
        const int pauseMs = isTooLong ? qMin(limit.left(), m_options.patienceMs) : left;
        if (m_socket.pause(Deadline(pauseMs)) == LinkCause::Stopped || isTooLong)
            return false;
    }
    return true;
}

/// Looks at what came since the previous exchange, and puts the stream back into step if it is in doubt.
void Connection::resynchronise()
{
    if (!isOpen())
        return;
    if (m_drainDue == LinkCause::None)
        recoverFrom(findUnaskedReplies());
    if (m_drainDue != LinkCause::None)
        drain(m_drainDue);
    m_drainDue = LinkCause::None;
}

/// With numbers, whole replies that nobody waits for do no harm.
LinkCause Connection::findUnaskedReplies()
{
    ReplyStream::Found found = ReplyStream::Nothing;
    LinkCause cause = LinkCause::None;
    do {
        found = qMax(found, m_replies.discardAll());
        if (found == ReplyStream::BadHeader)
            return LinkCause::BadHeader;
        cause = m_replies.receive(Deadline(0));
    } while (cause == LinkCause::None);
    if (cause != LinkCause::Silent)
        return cause;
    if (m_replies.isCut())
        return LinkCause::CutOff;
    const bool isInStep = found == ReplyStream::Nothing || m_replies.numbers().areEchoed();
    return isInStep ? LinkCause::None : LinkCause::Unasked;
}

/// Without a late reply the connection is dropped: the missing reply may still come, and would look like the next
/// answer.
void Connection::drain(LinkCause cause)
{
    const LinkCause end = listenUntilQuiet(m_options.timeoutMs);
    if (end == LinkCause::Stopped)
        return;
    if (end != LinkCause::None || !m_replies.hasLate())
        dropConnection(end == LinkCause::None ? cause : end);
}

/// Sends the request and fills in the exchange. Returns what went wrong.
LinkCause Connection::transact(const Protocol &request, Exchange *exchange)
{
    exchange->end = Exchange::NoReply;
    const QByteArray frame = m_replies.expectReplyTo(request);
    m_trace.request(frame);
    const Deadline deadline(m_options.timeoutMs);
    const LinkCause cause = m_socket.send(frame.constData(), frame.size(), deadline);
    if (cause != LinkCause::None)
        return cause;
    if (request.replyLength == 0) {
        exchange->end = Exchange::Sent;
        listenAfterBroadcast();
        return LinkCause::None;
    }
    return awaitReply(request, exchange, deadline);
}

LinkCause Connection::awaitReply(const Protocol &request, Exchange *exchange, const Deadline &deadline)
{
    for (;;) {
        ReplyFault fault = ReplyFault::None;
        const ReplyStream::Found found = m_replies.take(&exchange->reply, &fault);
        switch (found) {
        case ReplyStream::Answer:
        case ReplyStream::Unnumbered:
            return judge(request, exchange, found == ReplyStream::Answer);
        case ReplyStream::BadHeader:
            exchange->fault = fault;
            return LinkCause::BadHeader;
        case ReplyStream::Foreign: // the answer may still come
            m_replies.discard(exchange->reply);
            holdBack(ReplyFault::OtherTransaction, exchange);
            continue;
        case ReplyStream::Nothing:
            break;
        }
        const LinkCause cause = m_replies.receive(deadline);
        if (cause != LinkCause::None)
            return causeOfNoReply(cause, exchange);
    }
}

/// A time-out, more closely: nothing came, half a reply, or replies to something else.
LinkCause Connection::causeOfNoReply(LinkCause cause, Exchange *exchange)
{
    if (cause != LinkCause::Silent)
        return cause;
    if (m_replies.isCut())
        return LinkCause::CutOff;
    return exchange->fault == ReplyFault::None ? LinkCause::Silent : LinkCause::HeldBack;
}

LinkCause Connection::judge(const Protocol &request, Exchange *exchange, bool isNumbered)
{
    const ReplyFault fault = m_options.remote ? ReplyFault::None : checkReply(request.frame, exchange->reply);
    if (fault != ReplyFault::None)
        return holdBack(fault, exchange);
    return isNumbered ? accept(exchange) : confirm(request, exchange);
}

LinkCause Connection::accept(Exchange *exchange)
{
    m_trace.reply(exchange->reply, QString());
    m_replies.clearNumber(&exchange->reply);
    exchange->end = Exchange::Answered;
    exchange->fault = ReplyFault::None;
    m_link.answered(m_clock.elapsed());
    return LinkCause::None;
}

/// Bytes behind a held-back reply show that its length field is wrong.
LinkCause Connection::holdBack(ReplyFault fault, Exchange *exchange)
{
    m_trace.reply(exchange->reply, QStringLiteral("held back: ") + replyFaultText(fault));
    exchange->fault = fault;
    exchange->heldBack = exchange->reply;
    exchange->reply.clear();
    return m_replies.isCut() ? LinkCause::BadHeader : LinkCause::HeldBack;
}

/// A reply without a number answers the request if it is alone: a late reply would be followed by the true one, and a
/// reply that is sent twice by its copy.
LinkCause Connection::confirm(const Protocol &request, Exchange *exchange)
{
    const Deadline longest(mostTimes * m_options.quietMs);
    LinkCause cause = LinkCause::None;
    for (int times = 1; cause == LinkCause::None; ++times) {
        if (takeAnswerBehind(exchange, &cause))
            return judge(request, exchange, true);
        if (cause == LinkCause::None)
            cause = times > mostTimes && longest.isOver() ? LinkCause(LinkCause::Flood)
                                                          : m_replies.receive(Deadline(m_options.quietMs));
    }
    if (cause != LinkCause::Silent && cause != LinkCause::Closed)
        return cause;
    if (m_replies.isCut())
        return holdBack(ReplyFault::Ambiguous, exchange);
    m_replies.numbers().noteZeroAccepted();
    return accept(exchange);
}

/// Takes the replies behind one without a number. Copies of it put only the stream in doubt; a reply with the current
/// number takes its place: true. *cause tells of anything else.
bool Connection::takeAnswerBehind(Exchange *exchange, LinkCause *cause)
{
    QByteArray other;
    for (;;) {
        switch (m_replies.take(&other, &exchange->fault)) {
        case ReplyStream::Nothing:
            return false;
        case ReplyStream::BadHeader:
            *cause = LinkCause::BadHeader;
            return false;
        case ReplyStream::Answer:
            m_replies.discard(exchange->reply);
            exchange->reply = other;
            return true;
        default:
            m_replies.discard(other);
            m_doubt = LinkCause::Unasked;
            if (other == exchange->reply)
                continue;
            *cause = holdBack(ReplyFault::Ambiguous, exchange);
            return false;
        }
    }
}

/// A broadcast has no reply. What comes all the same is thrown away before it could look like the next answer.
void Connection::listenAfterBroadcast()
{
    m_doubt = listenUntilQuiet(qMax(turnaroundMs, m_options.gapMs));
    if (m_doubt == LinkCause::None && m_replies.hasLate() && !m_replies.numbers().areEchoed())
        m_doubt = LinkCause::Unasked;
}

/// Throws away what comes, until nothing has come for so long. Returns why that was not reached.
LinkCause Connection::listenUntilQuiet(int quietMs)
{
    const Deadline longest(mostTimes * quietMs);
    for (int times = 1;; ++times) {
        const LinkCause cause = m_replies.receive(Deadline(quietMs));
        if (cause == LinkCause::Silent)
            return m_replies.isCut() ? LinkCause::CutOff : LinkCause::None;
        if (cause != LinkCause::None)
            return cause;
        if (m_replies.discardAll() == ReplyStream::BadHeader)
            return LinkCause::BadHeader;
        if (times > mostTimes && longest.isOver())
            return LinkCause::Flood;
    }
}

/// Carries out what recovery.h decides.
void Connection::recoverFrom(LinkCause cause)
{
    m_replies.numbers().endWait();
    if (cause == LinkCause::None)
        return;
    const QString rest = m_replies.restText();
    m_trace.comment(rest.isEmpty() ? linkCauseText(cause)
                                   : QStringLiteral("%1: %2").arg(linkCauseText(cause), rest));
    StreamFacts facts = {m_options.afterTimeout, m_replies.numbers().areEchoed(), m_silentInRow};
    if (m_options.isSilenceUsual)
        facts = {m_options.afterTimeout, numbers() != TransactionNumbers::NotEchoed, 0};
    const Recovery recovery = recoveryAfter(cause, facts);
    if (recovery == Recovery::Drain)
        m_drainDue = cause;
    else if (recovery == Recovery::Drop)
        dropConnection(cause);
}

void Connection::dropConnection(const LinkCause &cause)
{
    m_link.lost(cause, m_clock.elapsed());
    m_socket.close();
    m_replies.clear();
    m_drainDue = LinkCause::None;
    m_trace.comment(QStringLiteral("connection dropped: ") + linkCauseText(cause));
}
