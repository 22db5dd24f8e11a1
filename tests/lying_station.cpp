// SPDX-License-Identifier: MIT
#include "lying_station.h"

#include "../driver/base/modbus_wire.h"

#include <chrono>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace modbus_driver::wire;

namespace {

qint64 nowMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

bool transmit(int connection, const QByteArray &bytes)
{
    return send(connection, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL) == bytes.size();
}

bool isReadable(int descriptor, int ms)
{
    pollfd watched = {descriptor, POLLIN, 0};
    return poll(&watched, 1, ms) > 0;
}

} // namespace

LyingStation::LyingStation(const Lie &lie) : m_lie(lie)
{
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(m_listener, reinterpret_cast<sockaddr *>(&address), size) != 0 || listen(m_listener, 8) != 0)
        qFatal("no port of this machine is free");
    getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &size);
    m_port = ntohs(address.sin_port);
    m_thread = std::thread(&LyingStation::run, this);
}

LyingStation::~LyingStation()
{
    m_stop = true;
    m_thread.join();
    close(m_listener);
}

void LyingStation::run()
{
    while (!m_stop) {
        if (!isReadable(m_listener, 20))
            continue;
        const int connection = accept(m_listener, nullptr, nullptr);
        const int on = 1;
        setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        ++m_connections;
        if (m_lie.asksNothing)
            transmit(connection, QByteArray::fromHex("000000000005010302FFFF"));
        serve(connection);
        close(connection);
    }
}

void LyingStation::serve(int connection)
{
    m_previous.clear();
    while (!m_stop) {
        sendDue(connection);
        if (m_lie.floods && !transmit(connection, QByteArray::fromHex("000000000005010302FFFF").repeated(100)))
            return;
        if (!isReadable(connection, m_late.empty() && !m_lie.floods ? 5 : 0))
            continue;
        char bytes[300];
        const ssize_t size = recv(connection, bytes, sizeof bytes, 0);
        if (size <= 0)
            return;
        answer(connection, QByteArray(bytes, static_cast<int>(size)));
        if (m_lie.closes)
            return;
    }
}

void LyingStation::answer(int connection, const QByteArray &request)
{
    ++m_requests;
    if (m_lie.silentEach > 0 && m_requests % m_lie.silentEach == 0)
        return;
    QByteArray reply = replyTo(request);
    if (m_lie.isOneBehind)
        std::swap(reply, m_previous);
    if (m_lie.slowEach > 0 && m_requests % m_lie.slowEach == 0)
        m_late.push_back({nowMs() + m_lie.slowMs, reply});
    else
        transmit(connection, reply);
    if (m_lie.doubleAfterMs >= 0)
        m_late.push_back({nowMs() + m_lie.doubleAfterMs, reply});
}

QByteArray LyingStation::replyTo(const QByteArray &request)
{
    QByteArray reply = request.left(WriteEchoLength);
    if (isReadFunction(byteAt(request, FunctionAt))) {
        const int quantity = wordAt(request, ValueAt);
        reply = request.left(ReadReplyHeader);
        reply[ReadByteCountAt] = static_cast<char>(2 * quantity);
        for (int i = 0; i < quantity; ++i)
            reply.append(request.at(UnitAt)).append(static_cast<char>(wordAt(request, AddressAt) + i));
    } else {
        ++m_writes;
    }
    putWord(reply.data() + LengthAt, reply.size() - LengthFieldEnd);
    if (m_lie.numbers != Lie::Echoed)
        putWord(reply.data() + TransactionAt, m_lie.numbers == Lie::Zero ? 0 : wordAt(reply, TransactionAt) + 99);
    return reply;
}

void LyingStation::sendDue(int connection)
{
    for (std::size_t i = 0; i < m_late.size();) {
        if (m_late[i].dueMs > nowMs()) {
            ++i;
            continue;
        }
        transmit(connection, m_late[i].bytes);
        m_late.erase(m_late.begin() + static_cast<std::ptrdiff_t>(i));
    }
}
