// SPDX-License-Identifier: MIT
// A link without a network: takes the place of the host's socket and of its clock. A script says what the station does
// with each request, and time passes only while somebody waits. Register A of unit U holds 256 * U + A; with all bytes that
// the script makes up below 0x80, and all transaction numbers above, nothing made up can be the reply to a request.

#pragma once

#include "script.h"

#include "../host/link/link_cause.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>

class ScriptedLink
{
public:
    explicit ScriptedLink(Script *script);
    ~ScriptedLink();

    /// The one that sockets and clocks belong to.
    static ScriptedLink *current;

    qint64 nowMs() const { return m_nowMs; }
    /// Passes and machine pauses that no deadline counts.
    qint64 pausedMs() const { return m_pausedMs; }
    /// Received since the last call.
    int takeReceived();
    /// Bytes came at some time often enough in a row to be taken for a flood.
    bool wasFlooded() const { return m_mostChunks > 5; }

    /// Whether the station sent this for its latest request, and carried it out if it is a write.
    bool isTrueAnswer(const QByteArray &reply) const;
    const QByteArray &request() const { return m_request; }

    /// On the main thread: returns when the script is over, or the host ended.
    void waitForEnd();
    void end();

    /// The calls of the socket.
    LinkCause connect(int timeoutMs, const std::atomic<bool> &stop);
    LinkCause send(const QByteArray &frame, const std::atomic<bool> &stop);
    LinkCause receive(char *bytes, int most, int *received, int leftMs, const std::atomic<bool> &stop);
    LinkCause pause(int leftMs, const std::atomic<bool> &stop);
    void close();

private:
    struct Arrival
    {
        qint64 dueMs;
        QByteArray bytes; ///< empty: the peer closes the connection
    };

    bool mustStop(const std::atomic<bool> &stop);
    void pass(qint64 ms);
    QByteArray trueReply();
    void answer(int deed);
    void arrive(const QByteArray &bytes, int afterMs = 0);

    Script *const m_script;
    const int m_numbers; ///< 0: echoed; 1: not; 2: now and then
    qint64 m_nowMs;
    qint64 m_lagMs = 0; ///< of the machine, at the next wait
    qint64 m_pausedMs = 0;
    int m_calls = 0;
    int m_callsAfterStop = 0;
    int m_received = 0;
    int m_chunks = 0; ///< since the latest request
    int m_mostChunks = 0;
    bool m_floods = false;
    bool m_isCut = false; ///< nothing more comes on this connection
    QByteArray m_request;
    QByteArray m_exception; ///< the reply to the latest request, if it is one
    QByteArray m_previous;  ///< true reply
    std::set<int> m_done;   ///< numbers of the writes that were carried out
    std::deque<Arrival> m_arrivals;

    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_isOver = false;
};
