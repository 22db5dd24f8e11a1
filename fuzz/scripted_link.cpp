// SPDX-License-Identifier: MIT
#include "scripted_link.h"

#include "../driver/base/modbus_wire.h"
#include "../host/link/tcp_socket.h"

#include <algorithm>
#include <thread>

using namespace modbus_driver::wire;

namespace {

const int mostCalls = 4000;     // of the socket, in one run
const int mostAfterStop = 8;    // until the loop has ended
const qint64 startMs = 1000000; // with it the first transaction number

QByteArray lowBytes(QByteArray bytes)
{
    for (char &byte : bytes)
        byte = static_cast<char>(byte & 0x7F);
    return bytes;
}

} // namespace

ScriptedLink *ScriptedLink::current = nullptr;

ScriptedLink::ScriptedLink(Script *script) : m_script(script), m_numbers(script->byte() % 3), m_nowMs(startMs)
{
    current = this;
}

ScriptedLink::~ScriptedLink()
{
    current = nullptr;
}

int ScriptedLink::takeReceived()
{
    const int received = m_received;
    m_received = 0;
    return received;
}

void ScriptedLink::waitForEnd()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_ended.wait(lock, [this] { return m_isOver; });
}

void ScriptedLink::end()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isOver = true;
    m_ended.notify_all();
}

/// At the end of the script the main thread stops the loop; this waits until it has.
bool ScriptedLink::mustStop(const std::atomic<bool> &stop)
{
    if (!stop && !m_script->atEnd() && ++m_calls < mostCalls)
        return false;
    end();
    while (!stop)
        std::this_thread::yield();
    require(++m_callsAfterStop <= mostAfterStop, "after a stop the loop ends");
    return true;
}

void ScriptedLink::pass(qint64 ms)
{
    m_nowMs += ms + m_lagMs;
    m_pausedMs += m_lagMs;
    m_lagMs = 0;
}

LinkCause ScriptedLink::connect(int timeoutMs, const std::atomic<bool> &stop)
{
    close();
    if (mustStop(stop))
        return LinkCause::Stopped;
    const int deed = m_script->byte();
    switch (deed % 8) {
    case 0:
        return LinkCause::Refused;
    case 1:
        pass(timeoutMs);
        return {LinkCause::NoAnswer, timeoutMs};
    case 2:
        arrive(m_previous); // kept by a gateway
        break;
    case 3:
        arrive(lowBytes(m_script->bytes(m_script->byte() % 32)));
        break;
    default:
        break;
    }
    if (deed & 0x80)
        m_lagMs = 10 * m_script->byte();
    return LinkCause::None;
}

LinkCause ScriptedLink::send(const QByteArray &frame, const std::atomic<bool> &stop)
{
    if (mustStop(stop))
        return LinkCause::Stopped;
    require(wordAt(frame, TransactionAt) >= 0x8000, "the numbers of this run are high");
    m_request = frame;
    m_exception.clear();
    m_chunks = 0;
    const int deed = m_script->byte();
    if (deed & 0x80)
        m_lagMs = 10 * m_script->byte();
    if (!m_isCut && byteAt(frame, UnitAt) != 0)
        answer(deed % 32);
    return LinkCause::None;
}

/// What the station does with its request, and what arrives for it.
void ScriptedLink::answer(int deed)
{
    const QByteArray old = m_previous;
    QByteArray reply;
    if (deed != 1 && deed != 2)
        reply = trueReply();
    switch (deed) {
    case 1: // silence
        return;
    case 2:
        return arrive(QByteArray());
    case 3: // late
        return arrive(reply, 10 * m_script->byte());
    case 4: // twice
        arrive(reply);
        return arrive(reply, m_script->byte() % 64);
    case 5: // behind one that is late
        arrive(old);
        break;
    case 6: // of another unit, function or place
        reply[UnitAt + m_script->byte() % 3] = static_cast<char>(m_script->byte() & 0x7F);
        return arrive(reply);
    case 7: // behind anything
        arrive(lowBytes(m_script->bytes(m_script->byte() % 32)));
        break;
    case 8: // in two pieces, or never whole
        m_isCut = true;
        m_arrivals.push_back({m_nowMs, reply.left(m_script->byte() % reply.size())});
        if (m_script->flag())
            m_arrivals.push_back({m_nowMs + 10 * m_script->byte(), reply.mid(m_arrivals.back().bytes.size())});
        return;
    case 9: // and then no more
        arrive(reply);
        return arrive(QByteArray());
    case 10:
        m_floods = true;
        return;
    case 11:
        m_exception = reply.left(FunctionAt + 1).append(static_cast<char>(m_script->byte() % 12));
        m_exception[FunctionAt] = static_cast<char>(m_exception.at(FunctionAt) | ExceptionFlag);
        putWord(m_exception.data() + LengthAt, m_exception.size() - LengthFieldEnd);
        return arrive(m_exception);
    case 12: // joined
        return arrive(reply + old);
    default:
        break;
    }
    arrive(reply, deed % 4);
}

/// To the latest request, which is carried out.
QByteArray ScriptedLink::trueReply()
{
    QByteArray reply = m_request.left(WriteEchoLength);
    if (isReadFunction(byteAt(m_request, FunctionAt))) {
        const int quantity = wordAt(m_request, ValueAt);
        reply = m_request.left(ReadByteCountAt).append(static_cast<char>(2 * quantity));
        for (int i = 0; i < quantity; ++i)
            reply.append(m_request.at(UnitAt)).append(static_cast<char>((wordAt(m_request, AddressAt) + i) & 0x7F));
    } else {
        m_done.insert(wordAt(m_request, TransactionAt));
    }
    putWord(reply.data() + LengthAt, reply.size() - LengthFieldEnd);
    if (m_numbers == 1 || (m_numbers == 2 && m_script->byte() % 4 == 0))
        putWord(reply.data() + TransactionAt, 0);
    m_previous = reply;
    return reply;
}

/// `reply` has 0 for its number. An exception may also be one that was made up: it is no value, and no success.
bool ScriptedLink::isTrueAnswer(const QByteArray &reply) const
{
    if (byteAt(reply, FunctionAt) & ExceptionFlag)
        return reply.mid(ProtocolAt) == m_exception.mid(ProtocolAt);
    const bool isWrite = !isReadFunction(byteAt(m_request, FunctionAt));
    return reply.mid(ProtocolAt) == m_previous.mid(ProtocolAt) &&
           (!isWrite || m_done.count(wordAt(m_request, TransactionAt)) == 1);
}

void ScriptedLink::arrive(const QByteArray &bytes, int afterMs)
{
    const Arrival arrival = {m_nowMs + afterMs, bytes};
    const auto later = [](const Arrival &a, const Arrival &b) { return a.dueMs < b.dueMs; };
    m_arrivals.insert(std::upper_bound(m_arrivals.begin(), m_arrivals.end(), arrival, later), arrival);
}

LinkCause ScriptedLink::receive(char *bytes, int most, int *received, int leftMs, const std::atomic<bool> &stop)
{
    if (mustStop(stop))
        return LinkCause::Stopped;
    if (m_floods) {
        *received = most - most % ExceptionReplyLength;
        std::fill_n(bytes, *received, '\0');
        for (int i = 0; i < *received; i += ExceptionReplyLength)
            bytes[i + LengthAt + 1] = ExceptionReplyLength - LengthFieldEnd;
    } else {
        const qint64 wait = m_arrivals.empty() ? leftMs : qMin<qint64>(leftMs, m_arrivals.front().dueMs - m_nowMs);
        pass(qMax<qint64>(0, wait));
        if (m_arrivals.empty() || m_arrivals.front().dueMs > m_nowMs)
            return LinkCause::Silent;
        const QByteArray next = m_arrivals.front().bytes;
        m_arrivals.pop_front();
        if (next.isEmpty())
            return LinkCause::Closed;
        *received = next.size();
        std::copy(next.begin(), next.end(), bytes);
    }
    m_received += *received;
    m_mostChunks = qMax(m_mostChunks, ++m_chunks);
    return LinkCause::None;
}

LinkCause ScriptedLink::pause(int leftMs, const std::atomic<bool> &stop)
{
    if (mustStop(stop))
        return LinkCause::Stopped;
    m_pausedMs += leftMs;
    pass(leftMs);
    return LinkCause::None;
}

void ScriptedLink::close()
{
    m_arrivals.clear();
    m_floods = m_isCut = false;
}

LinkCause TcpSocket::connectTo(const QString &, quint16, int timeoutMs)
{
    return ScriptedLink::current->connect(timeoutMs, m_stop);
}

LinkCause TcpSocket::send(const char *bytes, int size, const Deadline &)
{
    return ScriptedLink::current->send(QByteArray(bytes, size), m_stop);
}

LinkCause TcpSocket::receive(char *bytes, int most, int *received, const Deadline &deadline)
{
    return ScriptedLink::current->receive(bytes, most, received, deadline.left(), m_stop);
}

LinkCause TcpSocket::pause(const Deadline &deadline) const
{
    return ScriptedLink::current->pause(deadline.left(), m_stop);
}

void TcpSocket::close()
{
    if (ScriptedLink::current)
        ScriptedLink::current->close();
}

// The linker finds these before Qt's, so that the host's clocks show the link's time.
void QElapsedTimer::start() noexcept
{
    t1 = ScriptedLink::current->nowMs();
}

qint64 QElapsedTimer::elapsed() const noexcept
{
    return ScriptedLink::current->nowMs() - t1;
}

qint64 QElapsedTimer::nsecsElapsed() const noexcept
{
    return 1000000 * elapsed();
}

qint64 QElapsedTimer::msecsSinceReference() const noexcept
{
    return t1;
}
