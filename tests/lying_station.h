// SPDX-License-Identifier: MIT
/// \file
/// A station for one connection at a time that sends replies which nobody asked for, and can be caught: register A of
/// unit U holds 256 * U + A, and it counts the writes that it carried out. Runs in a thread of its own.

#pragma once

#include <QtCore/QByteArray>

#include <atomic>
#include <deque>
#include <functional>
#include <thread>

struct Lie
{
    enum Numbers { Echoed, Zero, Wrong };

    const char *name = "none";
    Numbers numbers = Echoed; ///< what becomes of transaction numbers
    int doubleAfterMs = -1;   ///< every reply once more after so long
    bool asksNothing = false; ///< a reply to an old request at every connect
    bool isOneBehind = false; ///< every request is answered by the previous one's reply
    int slowEach = 0;         ///< every K-th reply comes slowMs late
    int slowMs = 0;
    int silentEach = 0;  ///< every K-th request is neither carried out nor answered
    bool floods = false; ///< replies without end
    bool closes = false; ///< after each reply
};

class LyingStation
{
public:
    explicit LyingStation(const Lie &lie);
    ~LyingStation();

    quint16 port() const { return m_port; }
    int writes() const { return m_writes; }
    int connections() const { return m_connections; }

private:
    struct Late
    {
        qint64 dueMs;
        QByteArray bytes;
    };

    void run();
    void serve(int connection);
    void answer(int connection, const QByteArray &request);
    QByteArray replyTo(const QByteArray &request);
    void sendDue(int connection);

    const Lie m_lie;
    int m_listener = -1;
    quint16 m_port = 0;
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_writes{0};
    std::atomic<int> m_connections{0};
    int m_requests = 0;
    QByteArray m_previous;
    std::deque<Late> m_late;
    std::thread m_thread;
};
