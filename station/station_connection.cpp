// SPDX-License-Identifier: MIT
#include "station_connection.h"

#include <sys/socket.h>

namespace {
// Bytes. streamLimit is above the longest request, Modbus or remote. The limits stop a master that sends
// requests but does not read the replies.
const int streamLimit = 256 * 1024;
const int socketLimit = 64 * 1024;
const int floodChunk = 8 * 1024;
} // namespace

StationConnection::StationConnection(QTcpSocket *socket, FrameSize frameSize, Answer answer, QObject *parent)
    : QObject(parent), m_socket(socket), m_frameSize(frameSize), m_answer(std::move(answer))
{
    m_socket->setParent(this);
    m_socket->setReadBufferSize(socketLimit);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_delayTimer.setParent(this);
    m_delayTimer.setSingleShot(true);
    m_delayTimer.setTimerType(Qt::PreciseTimer);
    m_nextRequestTimer.setParent(this);
    m_nextRequestTimer.setSingleShot(true);
    connect(&m_nextRequestTimer, &QTimer::timeout, this, &StationConnection::answerNext);
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
        m_nextRequestTimer.start();
    deliver(m_answer(request));
}

bool StationConnection::isReady() const
{
    return isConnected() && !m_delayTimer.isActive() && !m_nextRequestTimer.isActive() &&
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
    disconnect(&m_delayTimer, nullptr, this, nullptr);
    connect(&m_delayTimer, &QTimer::timeout, this, [this, delivery] {
        send(delivery);
        answerNext();
    });
    m_delayTimer.start(delivery.delay);
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
    m_flood = reply.repeated(1 + floodChunk / reply.size());
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
    const linger resetOnClose = {1, 0};
    setsockopt(static_cast<int>(m_socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &resetOnClose,
               sizeof resetOnClose);
    m_socket->abort();
}
