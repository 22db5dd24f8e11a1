// SPDX-License-Identifier: MIT
#include "station_connection.h"

#include <sys/socket.h>

namespace {
// Above the longest request of either kind of frames. A master that sends more than it reads has to wait.
const int streamLimit = 256 * 1024;
const int socketLimit = 64 * 1024;
const int floodPiece = 8 * 1024;
} // namespace

StationConnection::StationConnection(QTcpSocket *socket, FrameSize frameSize, Answer answer, QObject *parent)
    : QObject(parent), m_socket(socket), m_frameSize(frameSize), m_answer(std::move(answer))
{
    m_socket->setParent(this);
    m_socket->setReadBufferSize(socketLimit);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_delay.setParent(this);
    m_delay.setSingleShot(true);
    m_delay.setTimerType(Qt::PreciseTimer);
    m_turn.setParent(this);
    m_turn.setSingleShot(true);
    connect(&m_turn, &QTimer::timeout, this, &StationConnection::answerNext);
    connect(m_socket, &QTcpSocket::readyRead, this, &StationConnection::answerNext);
    connect(m_socket, &QTcpSocket::bytesWritten, this, &StationConnection::continueFlood);
    connect(m_socket, &QTcpSocket::bytesWritten, this, &StationConnection::answerNext);
    connect(m_socket, &QTcpSocket::disconnected, this, &StationConnection::deleteLater);
}

void StationConnection::answerNext()
{
    if (!isReady())
        return;
    if (m_received.size() < streamLimit)
        m_received += m_socket->readAll();
    const int size = m_frameSize(m_received);
    if (size < 0)
        return m_socket->disconnectFromHost();
    if (size == 0)
        return;
    const QByteArray request = m_received.left(size);
    m_received.remove(0, size);
    if (!m_received.isEmpty() || m_socket->bytesAvailable() > 0)
        m_turn.start();
    deliver(m_answer(request));
}

bool StationConnection::isReady() const
{
    return isConnected() && !m_delay.isActive() && !m_turn.isActive() &&
           m_socket->bytesToWrite() < socketLimit;
}

void StationConnection::deliver(const Delivery &delivery)
{
    if (delivery.late > 0) {
        QTimer::singleShot(delivery.late, Qt::PreciseTimer, this, [this, delivery] { send(delivery); });
        return;
    }
    if (delivery.delay == 0)
        return send(delivery);
    disconnect(&m_delay, nullptr, this, nullptr);
    connect(&m_delay, &QTimer::timeout, this, [this, delivery] {
        send(delivery);
        answerNext();
    });
    m_delay.start(delivery.delay);
}

void StationConnection::send(const Delivery &delivery)
{
    if (delivery.ending == Delivery::Reset)
        return reset();
    if (delivery.ending == Delivery::Close)
        return m_socket->disconnectFromHost();
    m_heldBack += delivery.reply.repeated(delivery.copies);
    if (delivery.heldBack || delivery.reply.isEmpty())
        return;
    write(m_heldBack);
    m_heldBack.clear();
    if (delivery.repeatAfter >= 0)
        QTimer::singleShot(delivery.repeatAfter, Qt::PreciseTimer, this,
                           [this, reply = delivery.reply] { write(reply); });
    if (delivery.floodSeconds > 0)
        startFlood(delivery.reply, delivery.floodSeconds);
}

void StationConnection::write(const QByteArray &bytes)
{
    if (!isConnected())
        return;
    m_socket->write(bytes);
    emit sent(bytes);
}

void StationConnection::startFlood(const QByteArray &reply, int seconds)
{
    m_flood = reply.repeated(1 + floodPiece / reply.size());
    m_floodEnd.setRemainingTime(seconds * 1000);
    continueFlood();
}

void StationConnection::continueFlood()
{
    if (m_floodEnd.hasExpired())
        m_flood.clear();
    while (!m_flood.isEmpty() && isConnected() && m_socket->bytesToWrite() < socketLimit)
        m_socket->write(m_flood);
}

void StationConnection::reset()
{
    const linger atOnce = {1, 0};
    setsockopt(static_cast<int>(m_socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    m_socket->abort();
}
