// SPDX-License-Identifier: MIT
/// \file
/// One master's connection: splits the byte stream into requests, has each answered, and sends the replies as
/// the delivery says. Requests are answered in order, one in each turn of the event loop, so that no master
/// keeps others waiting. Lives on the station's thread and deletes itself when the connection ends.

#pragma once

#include "delivery.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpSocket>

#include <functional>

class StationConnection : public QObject
{
    Q_OBJECT

public:
    /// Bytes of the first request in the stream; 0: more are needed; -1: no such frame, the connection is
    /// closed.
    using FrameSize = int (*)(const QByteArray &stream);
    /// Carries one request out. May drop this connection.
    using Answer = std::function<Delivery(const QByteArray &request)>;

    /// Owns the socket from now on.
    StationConnection(QTcpSocket *socket, FrameSize frameSize, Answer answer, QObject *parent);

    /// Sends what a request would be answered with, without one.
    void deliver(const Delivery &delivery);
    /// Ends the connection at once.
    void drop() { m_socket->abort(); }

signals:
    /// Bytes were handed to the socket; not those that a flood repeats.
    void sent(const QByteArray &bytes);

private:
    void answerNext();
    bool isReady() const;
    bool isConnected() const { return m_socket->state() == QAbstractSocket::ConnectedState; }
    void send(const Delivery &delivery);
    void write(const QByteArray &bytes);
    void startFlood(const QByteArray &reply, int seconds);
    void continueFlood();
    void reset();

    QTcpSocket *m_socket;
    FrameSize m_frameSize;
    Answer m_answer;
    QTimer m_delay;
    QTimer m_turn;
    QDeadlineTimer m_floodEnd;
    QByteArray m_flood;
    QByteArray m_received;
    QByteArray m_heldBack;
};
