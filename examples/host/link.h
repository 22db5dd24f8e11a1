// SPDX-License-Identifier: MIT
// The connection to a station or gateway, as both hosts of this folder use it. One thread uses it.
//
// Every request of the driver carries transaction 0, and the driver judges a reply by its length alone. So
// this host numbers each request, in its own copy of the frame. A reply with another number, unit or
// function is that of another request: it never reaches the driver, and the connection is dropped.
#pragma once

#include <modbus_tcpip_rtu_m.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QtEndian>
#include <QtNetwork/QTcpSocket>

class Link
{
public:
    // `patience` in ms, for a connection and for a whole reply.
    Link(const QString &address, quint16 port, int patience = 1000)
        : m_address(address), m_port(port), m_patience(patience)
    {
    }

    // Sends the request. Returns the whole reply; nothing when none is due or none came.
    QByteArray exchange(const Protocol &request)
    {
        m_number = quint16(m_number % 0xFFFF + 1); // not 0: that is what stations send that repeat no number
        QByteArray frame = request.frame;
        qToBigEndian(m_number, frame.data());
        if (!ready() || m_socket.write(frame) < 0)
            return dropped();
        if (request.replyLength == 0)
            return m_socket.waitForBytesWritten(m_patience) ? QByteArray() : dropped();
        const QDeadlineTimer deadline(m_patience);
        const QByteArray head = receive(6, deadline);
        const int rest = head.isEmpty() ? 0 : qFromBigEndian<quint16>(head.constData() + 4);
        const QByteArray reply = rest < 2 || rest > 254 ? QByteArray() : head + receive(rest, deadline);
        if (reply.size() != 6 + rest || !answers(reply, frame))
            return dropped();
        return request.frame.left(2) + reply.mid(2); // the driver's own transaction 0
    }

private:
    // Transaction, protocol, unit and function; an exception reply has 0x80 added to the function.
    static bool answers(const QByteArray &reply, const QByteArray &frame)
    {
        return reply.left(4) == frame.left(4) && reply.at(6) == frame.at(6) &&
               (reply.at(7) & 0x7F) == frame.at(7);
    }

    // A connection on which nothing is left unread. What is left answers no request to come: it drops the
    // connection.
    bool ready()
    {
        if (!m_socket.waitForReadyRead(0) && m_socket.bytesAvailable() == 0 &&
            m_socket.state() == QAbstractSocket::ConnectedState)
            return true;
        m_socket.abort();
        m_socket.connectToHost(m_address, m_port);
        return m_socket.waitForConnected(m_patience);
    }

    // Exactly `size` bytes, or nothing when they did not come in time.
    QByteArray receive(int size, const QDeadlineTimer &deadline)
    {
        while (m_socket.bytesAvailable() < size) {
            if (!m_socket.waitForReadyRead(int(deadline.remainingTime())))
                return QByteArray();
        }
        return m_socket.read(size);
    }

    QByteArray dropped()
    {
        m_socket.abort();
        return QByteArray();
    }

    const QString m_address;
    const quint16 m_port;
    const int m_patience;
    quint16 m_number = 0; // of the last request
    QTcpSocket m_socket;
};
