// SPDX-License-Identifier: MIT
#include "loopback.h"

#include "cpu_time.h"
#include "floors.h"
#include "fresh_driver.h"
#include "work.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

using namespace modbus_driver;

namespace bench {

namespace {

/// A blocking connection that gives up after a second.
class Connection
{
public:
    explicit Connection(int port) : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in station = {};
        station.sin_family = AF_INET;
        station.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        station.sin_port = htons(static_cast<std::uint16_t>(port));
        const timeval patience = {1, 0};
        const int on = 1;
        ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        ::setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        m_open = ::connect(m_socket, reinterpret_cast<const sockaddr *>(&station), sizeof station) == 0;
    }
    ~Connection() { ::close(m_socket); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool isOpen() const { return m_open; }

    /// Sends the request and fills `reply`. False when less came.
    bool exchange(const QByteArray &request, QByteArray *reply)
    {
        if (::send(m_socket, request.constData(), static_cast<std::size_t>(request.size()), MSG_NOSIGNAL) !=
            request.size())
            return false;
        const std::size_t wanted = static_cast<std::size_t>(reply->size());
        return ::recv(m_socket, reply->data(), wanted, MSG_WAITALL) == reply->size();
    }

private:
    const int m_socket;
    bool m_open = false;
};

typedef std::function<bool()> Exchange;

bool print(const Exchange &exchange, int exchanges)
{
    const double cpu = cpuSeconds();
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < exchanges; ++i) {
        if (!exchange())
            return false;
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
    std::printf("{\"exchanges_per_second\": %.0f, \"cpu_microseconds\": %.3f}\n", exchanges / wall.count(),
                (cpuSeconds() - cpu) * 1e6 / exchanges);
    return true;
}

Exchange withDriver(Connection *connection, int registers)
{
    freshDriver(Shared);
    RW_VAR entry = readOf(AreaHoldingRegisters, 0, registers);
    AddListReadVar(&entry);
    QByteArray reply(9 + 2 * registers, '\0');
    return [=]() mutable {
        const Protocol *request = ComCommunication();
        return request && connection->exchange(request->frame, &reply) &&
               DataCom(&reply, reply.size())->status == StatusDone;
    };
}

Exchange withoutDriver(Connection *connection, int registers)
{
    FloorState *floor = &freshFloor();
    ask(floor, 3, 0, registers);
    const QByteArray request = floor->frame;
    QByteArray reply(9 + 2 * registers, '\0');
    return [=]() mutable { return connection->exchange(request, &reply); };
}

} // namespace

bool printLoopback(bool hasDriver, int port, int registers, int exchanges)
{
    Connection connection(port);
    const auto client = hasDriver ? withDriver : withoutDriver;
    const bool good = connection.isOpen() && print(client(&connection, registers), exchanges);
    if (!good)
        std::fprintf(stderr, "driver-bench: no good reply from 127.0.0.1:%d\n", port);
    return good;
}

} // namespace bench
