// SPDX-License-Identifier: MIT
/// \file
/// A listening socket of this machine. While nobody serves it, a master connects, sends, and gets no reply; while it is
/// full, a master cannot even connect. Any thread.

#pragma once

#include <gtest/gtest.h>

#include <QtCore/QByteArray>

#include <functional>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

class LoopbackListener
{
public:
    LoopbackListener()
    {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof m_address;
        EXPECT_EQ(bind(m_descriptor, reinterpret_cast<sockaddr *>(&m_address), size), 0);
        EXPECT_EQ(listen(m_descriptor, 0), 0);
        getsockname(m_descriptor, reinterpret_cast<sockaddr *>(&m_address), &size);
    }
    ~LoopbackListener()
    {
        close(m_filler);
        close(m_descriptor);
    }

    /// One connection fills a queue of length 0.
    void fill() { EXPECT_EQ(connect(m_filler, reinterpret_cast<sockaddr *>(&m_address), sizeof m_address), 0); }
    /// Accepts one connection and answers each request on it, until the master ends it.
    void serve(const std::function<QByteArray(const QByteArray &request)> &reply) const
    {
        const int connection = accept(m_descriptor, nullptr, nullptr);
        char bytes[260];
        for (ssize_t size = 0; (size = recv(connection, bytes, sizeof bytes, 0)) > 0;) {
            const QByteArray answer = reply(QByteArray(bytes, static_cast<int>(size)));
            send(connection, answer.constData(), static_cast<std::size_t>(answer.size()), MSG_NOSIGNAL);
        }
        close(connection);
    }
    quint16 port() const { return ntohs(m_address.sin_port); }

private:
    const int m_descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int m_filler = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in m_address = {};
};
