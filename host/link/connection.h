// SPDX-License-Identifier: MIT
/// \file
/// The link to the station: sends one request and waits for its reply. Used on the communication thread.
///
/// Each request gets a transaction number in the connection's own copy of the frame; the reply is handed on with 0 as the
/// driver sent it. So a late reply is thrown away and the connection kept. A station that does not echo numbers is
/// recognised by its replies: then only order ties a reply to its request, the connection listens for a quiet time
/// after each reply, and whatever puts the order in doubt is judged in recovery.h.

#pragma once

#include "exchange.h"
#include "recovery.h"
#include "reply_stream.h"

struct ConnectionOptions
{
    QString host;
    quint16 port = 0;
    int timeoutMs = 1000; ///< for a connection, and from a request to the end of its reply
    int gapMs = 0;        ///< from the end of an exchange to the next request
    int quietMs = 20;     ///< without numbers: how long after a reply no other may come
    int patienceMs =
        20; ///< how long a request waits for a link that is backing off, before it counts as not sent
    AfterTimeout afterTimeout = AfterTimeout::Numbers;
    bool isSilenceUsual = false; ///< most requests go to nobody: silence alone does not drop the connection
    bool remote = false; ///< frames carry neither number nor length: a reply is as long as the driver expects
    BackOffTimes backOff;
};

class Connection
{
public:
    /// All references must outlive the connection. Once `stop` is set, every wait ends within a fraction of a second.
    Connection(const ConnectionOptions &options, const LinkTrace &trace, const std::atomic<bool> &stop);

    /// Makes sure that the link is open, and that nothing unasked comes from a station that may not echo numbers. False
    /// when it cannot be opened, or while it is backing off.
    bool open();
    /// For a host with nothing to send.
    void pause(const Deadline &until) const { m_socket.pause(until); }
    /// Sends the request, once the link is open and in step, and waits for its reply.
    Exchange exchange(const Protocol &request);

    LinkState::State state() { return isOpen() ? LinkState::Up : m_link.at(m_clock.elapsed()); }
    LinkCause cause() const { return m_link.cause(); }
    TransactionNumbers::Habit numbers() { return m_replies.numbers().habit(); }

private:
    bool waitForLink();
    bool isOpen() const { return m_link.isUp(); }

    void resynchronise();
    LinkCause findUnaskedReplies();
    void drain(LinkCause cause);

    LinkCause transact(const Protocol &request, Exchange *exchange);
    LinkCause awaitReply(const Protocol &request, Exchange *exchange, const Deadline &deadline);
    LinkCause judge(const Protocol &request, Exchange *exchange, bool isNumbered);
    LinkCause confirm(const Protocol &request, Exchange *exchange);
    bool takeAnswerBehind(Exchange *exchange, LinkCause *cause);
    LinkCause accept(Exchange *exchange);
    LinkCause holdBack(ReplyFault fault, Exchange *exchange);
    LinkCause causeOfNoReply(LinkCause cause, Exchange *exchange);
    void listenAfterBroadcast();
    LinkCause listenUntilQuiet(int quietMs);

    void recoverFrom(LinkCause cause);
    void dropConnection(const LinkCause &cause);

    const ConnectionOptions m_options;
    const LinkTrace &m_trace;
    TcpSocket m_socket;
    ReplyStream m_replies;
    LinkState m_link;
    LinkCause m_drainDue = LinkCause::None; ///< what put the stream in doubt that is to be drained
    LinkCause m_doubt = LinkCause::None;    ///< of an exchange that was answered all the same
    QElapsedTimer m_clock;
    Deadline m_gap{0}; ///< after the previous exchange
    int m_lastUnit = -1;
    int m_timesOpened = 0;
    int m_silentInRow = 0;
};
