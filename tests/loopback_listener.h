// SPDX-License-Identifier: MIT
/// \file
/// A listening socket of this machine that nobody accepts on: a master connects, sends, and gets no reply. While it is
/// full, a master cannot even connect. Any thread.

#pragma once

#include <gtest/gtest.h>

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
        EXPECT_EQ(bind(descriptor, reinterpret_cast<sockaddr *>(&m_address), size), 0);
        EXPECT_EQ(listen(descriptor, 0), 0);
        getsockname(descriptor, reinterpret_cast<sockaddr *>(&m_address), &size);
    }
    ~LoopbackListener()
    {
        close(m_filler);
        close(descriptor);
    }

    /// One connection fills a queue of length 0.
    void fill() { EXPECT_EQ(connect(m_filler, reinterpret_cast<sockaddr *>(&m_address), sizeof m_address), 0); }
    int port() const { return ntohs(m_address.sin_port); }

    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);

private:
    const int m_filler = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in m_address = {};
};
