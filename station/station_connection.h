// SPDX-License-Identifier: MIT
/// \file
/// The connection of one master. It splits the byte stream into requests, calls Answer for each, and sends
/// the reply as the delivery says. It answers requests in order, one in each pass of the event loop, so that
/// other masters do not wait. Used on the station's thread. It deletes itself when the connection ends.

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
    /// The size in bytes of the first request in the stream. 0: more bytes are needed. -1: not a request; the
    /// connection is closed.
    using FrameSize = int (*)(const QByteArray &stream);
    /// Executes one request. May drop this connection.
    using Answer = std::function<Delivery(const QByteArray &request)>;

    /// Takes the ownership of the socket.
    StationConnection(QTcpSocket *socket, FrameSize frameSize, Answer answer, QObject *parent);

    /// Sends the delivery as if it were the reply to a request.
    void deliver(const Delivery &delivery);
    /// Ends the connection at once.
    void drop() { m_socket->abort(); }

signals:
    /// Bytes were written to the socket. The repetitions of a flood are left out.
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
    QTimer m_delayTimer;
    QTimer m_nextRequestTimer;
    QDeadlineTimer m_floodEnd;
    QByteArray m_flood;
    QByteArray m_received;
    QByteArray m_heldBack;
};
