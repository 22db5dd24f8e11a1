// SPDX-License-Identifier: MIT
/// \file
/// The link to the station: a blocking socket that sends one request and waits for its reply. Made, used and
/// destroyed on the communication thread.
///
/// Every request carries transaction 0, so only order ties a reply to its request. Whatever puts this order in doubt
/// (no reply in time, half a reply, a reply to something else, an unasked reply) is judged in recovery.h, and the
/// stream is resynchronised before the next request.

#pragma once

#include "exchange.h"
#include "link_trace.h"
#include "reply_framing.h"

#include "../../driver/api/records.h"

#include <QtCore/QElapsedTimer>
#include <QtNetwork/QTcpSocket>

#include <atomic>

struct ConnectionOptions
{
    QString host;
    quint16 port = 0;
    int timeoutMs = 1000; ///< for a connection, and from a request to the end of its reply
    int gapMs = 0;        ///< from the end of an exchange to the next request
    bool drain = false;   ///< read a stream in doubt until the late reply has come, instead of dropping it
    bool remote = false;  ///< frames carry no length: a reply is as long as the driver expects
    BackOffTimes backOff;
};

class Connection
{
public:
    /// All references must outlive the connection. Once `stop` is set, every wait for a reply ends soon.
    Connection(const ConnectionOptions &options, const LinkTrace &trace, const std::atomic<bool> &stop);

    /// Makes sure that the link is open. False when it cannot be opened, or while it is backing off.
    bool open();
    /// Sends the request, once the link is open and in step, and waits for its reply.
    Exchange exchange(const Protocol &request);

    LinkState::State state() { return m_link.at(m_clock.elapsed()); }
    LinkCause cause() const { return m_link.cause(); }

private:
    void keepGap() const;
    void resynchronise(Aftermath *before);
    void findUnaskedReplies(Aftermath *before);
    void drain(LinkCause cause, Aftermath *before);
    void waitUntilQuiet();
    int discardReplies();
    bool send(const Protocol &request);
    LinkCause transact(const Protocol &request, Exchange *exchange);
    LinkCause awaitReply(const Protocol &request, Exchange *exchange);
    LinkCause judge(const Protocol &request, Exchange *exchange);
    ReplyFraming::Result takeReply(const Protocol &request, Exchange *exchange);
    void receive(int waitMs);
    void traceDoubt(const Exchange &exchange) const;
    void dropConnection(LinkCause cause);
    bool isOpen();
    bool isConnected() const { return m_socket.state() == QAbstractSocket::ConnectedState; }

    const ConnectionOptions m_options;
    const LinkTrace &m_trace;
    const std::atomic<bool> &m_stop;
    QTcpSocket m_socket;
    ReplyFraming m_framing;
    LinkState m_link;
    LinkCause m_doubt = LinkCause::None; ///< what went wrong since the stream was in step
    QElapsedTimer m_clock;
    qint64 m_lastEndMs = -1; ///< of the previous exchange
    int m_lastUnit = -1;
    int m_timesOpened = 0;
};
