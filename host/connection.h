// SPDX-License-Identifier: MIT
/// \file
/// The link to the station: a blocking socket that sends one request and waits for its reply. Made, used and
/// destroyed on the communication thread.
///
/// Every request carries transaction 0, so nothing but order ties a reply to its request. After anything that
/// puts this order in doubt (no reply in time, half a reply, a reply that cannot be the answer, one more than
/// was asked for) the stream is suspect, and before anything else is sent it is either dropped and opened
/// anew or, for serial gateways, read empty until it is quiet; dropped all the same if no late reply came.

#pragma once

#include "exchange.h"
#include "reply_framing.h"
#include "trace.h"

#include "api/records.h"

#include <QtCore/QElapsedTimer>
#include <QtNetwork/QTcpSocket>

#include <atomic>

struct ConnectionOptions
{
    QString host;
    quint16 port = 0;
    int timeoutMs = 1000; ///< for a connection, and from a request to the end of its reply
    int gapMs = 0;        ///< from the end of an exchange to the next request
    bool drain = false;   ///< read a suspect stream until the late reply has come, instead of dropping it
    bool remote = false;  ///< frames tell no length: a reply is as long as the driver expects
    BackOffTimes backOff;
};

class Connection
{
public:
    /// Both references must outlive the connection. A stop that is set ends every wait for a reply soon.
    Connection(const ConnectionOptions &options, const Trace &trace, const std::atomic<bool> &stop);

    /// Makes sure that the link is open. False when it cannot be, or while it backs off from trying.
    bool open();
    /// Sends the request, once the link is open and in step, and waits for its reply.
    Exchange exchange(const Protocol &request);

    LinkState::State state() { return m_link.at(m_clock.elapsed()); }
    LinkCause cause() const { return m_link.cause(); }

private:
    void keepGap() const;
    void settle(Aftermath *before);
    void drain();
    int takeLate();
    void send(const Protocol &request, Exchange *exchange);
    void awaitReply(const Protocol &request, Exchange *exchange);
    void judge(const Protocol &request, Exchange *exchange);
    void receive(int waitMs);
    void suspect(LinkCause cause);
    void lose(LinkCause cause);
    bool isConnected() const { return m_socket.state() == QAbstractSocket::ConnectedState; }

    const ConnectionOptions m_options;
    const Trace &m_trace;
    const std::atomic<bool> &m_stop;
    QTcpSocket m_socket;
    ReplyFraming m_framing;
    LinkState m_link;
    LinkCause m_suspect = LinkCause::None; ///< why the stream is suspect; None while it is not
    QElapsedTimer m_clock;
    qint64 m_lastEndMs = -1; ///< of the exchange before
    int m_lastUnit = -1;
    int m_timesOpened = 0;
};
