// SPDX-License-Identifier: MIT
#include "communication_loop.h"

#include "status_text.h"

#include <chrono>

namespace {

enum { StatusRetrying = 0, StatusGood = 1, StatusAccepted = 100 }; // driver/status_codes.h
enum { ReadAccess = 0, WriteAccess = 1, ReadHalfOfBitWrite = -1 }; // driver/records.h
enum { EntryGivenUp = 2 };                                         // driver/host_control.h

const int pollItem = -1; // hostItem of everything on the poll list
const int pauseMs = 20;  // between two looks at a driver with nothing to send, or at a link that is down

CommunicationLoop *running = nullptr; // for the call-back, which has no other way to find its loop

bool isGood(int status)
{
    return status == StatusGood || status == StatusAccepted;
}

/// The unit is not there, as its gateway or its silence tells. Any other exception is a sign of life.
bool isUnanswered(const Exchange &exchange)
{
    const int exception = exceptionCode(exchange.reply);
    return exchange.end == Exchange::NoReply || exception == 10 || exception == 11;
}

QString failureText(const Exchange &exchange, int status)
{
    if (exchange.end == Exchange::Answered && exceptionCode(exchange.reply) < 0)
        return QStringLiteral("%1 (driver status %2)").arg(statusText(status)).arg(status);
    return exchangeText(exchange);
}

} // namespace

CommunicationLoop::CommunicationLoop(const DriverLibrary &driver, const ConnectionOptions &connection,
                                     const LoopOptions &options, const Trace &trace, PanelState &state)
    : m_driver(driver), m_connectionOptions(connection), m_options(options), m_trace(trace), m_state(state),
      m_values(state.snapshot().values), m_units(options.offAfter, options.retryOffMs)
{
    m_clock.start();
}

CommunicationLoop::~CommunicationLoop()
{
    stop();
}

void CommunicationLoop::start()
{
    m_thread = std::thread(&CommunicationLoop::run, this);
}

void CommunicationLoop::stop()
{
    {
        std::lock_guard<std::mutex> lock(m_restMutex);
        m_stop = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void CommunicationLoop::run()
{
    Connection connection(m_connectionOptions, m_trace, m_stop);
    m_connection = &connection;
    running = this;
    if (!connection.open())
        m_stop = true;
    m_state.noteLink(connection.state(), connection.cause());

    m_passStartMs = m_clock.elapsed();
    while (!m_stop) {
        for (int unit : m_units.due(m_clock.elapsed()))
            switchUnit(unit, true);
        const Protocol *request = m_driver.nextRequest();
        if (!request) {
            idle();
            continue;
        }
        m_idleCalls = 0;
        if (!m_isRetry && request->var.hostItem == pollItem && m_pass.isOverAt(request->var))
            nextPass();
        if (!m_stop)
            serve(*request);
    }
    running = nullptr;
    m_connection = nullptr;
    m_state.noteEnd();
}

/// One request, one reply or none. While the link is down every request is handed back as unanswered: writes
/// end with their retries instead of piling up, to go out minutes after somebody entered them.
void CommunicationLoop::serve(const Protocol &request)
{
    const Protocol asked = request; // the driver's record may end with handReply
    const Exchange exchange = m_connection->exchange(asked);
    QByteArray reply = exchange.reply;
    const int status = m_driver.handReply(&reply, reply.size())->status;
    m_isRetry = status == StatusRetrying;
    m_hasPolled = m_hasPolled || asked.var.hostItem == pollItem;
    noteOutcome(asked, exchange, status);
    judgeUnit(asked.var.station, exchange, status);
    if (exchange.end == Exchange::NotSent)
        rest(m_clock.elapsed() + pauseMs);
}

void CommunicationLoop::noteOutcome(const Protocol &request, const Exchange &exchange, int status)
{
    const RW_VAR &access = request.var;
    m_state.noteLink(m_connection->state(), m_connection->cause());
    m_state.noteExchange(access.station, exchange);
    if (access.rwFlag == ReadAccess && isGood(status))
        noteRead(access);
    else if (access.rwFlag == ReadAccess && exchange.cause != LinkCause::Stopped)
        m_state.noteFailure(spanOf(access), failureText(exchange, status));
    if (access.hostItem != pollItem)
        noteItem(access, exchange, status);
}

/// Values are fetched here, right behind the read that brought them, so that value and age belong together.
void CommunicationLoop::noteRead(const RW_VAR &read)
{
    const Span span = spanOf(read);
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (!m_values[i].span().overlaps(span))
            continue;
        const Variable &variable = m_values[i].variable();
        QByteArray value;
        m_driver.getRegisterData(0, variable.area, variable.addressText, variable.unit, value,
                                 variable.driverCount());
        m_state.noteValue(i, span, value);
    }
}

void CommunicationLoop::noteItem(const RW_VAR &access, const Exchange &exchange, int status)
{
    ItemResult &item = m_items[access.hostItem];
    if (!isGood(status)) {
        item.failure = failureText(exchange, status);
        item.mayBeDone |= access.rwFlag == WriteAccess && exchange.end == Exchange::NoReply;
    } else if (access.subIndex != ReadHalfOfBitWrite) {
        item.mayBeDone = false;
        ++item.served;
    }
    m_state.noteItem(access.hostItem, item);
}

void CommunicationLoop::writeDone(int, int, int hostItem, int outcome)
{
    if (!running)
        return;
    ItemResult &item = running->m_items[hostItem];
    item.isEnded = true;
    item.isGivenUp = outcome == EntryGivenUp;
}

void CommunicationLoop::judgeUnit(int unit, const Exchange &exchange, int status)
{
    if (exchange.end == Exchange::NotSent || exchange.cause == LinkCause::Stopped || m_isRetry)
        return;
    if (!isUnanswered(exchange))
        m_units.answered(unit);
    else if (!isGood(status) && m_units.gaveUp(unit, m_clock.elapsed()))
        switchUnit(unit, false);
}

/// Requests for a unit that is off stay where they are in the driver's queues.
void CommunicationLoop::switchUnit(int unit, bool on)
{
    m_driver.enableStation(unit, on ? 1 : 0);
    m_state.noteUnitOff(unit, !on);
}

/// The request that opens the next pass is built already; it waits here until the pass is due.
void CommunicationLoop::nextPass()
{
    m_state.notePass();
    ++m_passes;
    if (m_options.passes > 0 && m_passes >= m_options.passes) {
        m_stop = true;
        return;
    }
    rest(m_passStartMs + m_options.everyMs);
    m_passStartMs = m_clock.elapsed();
}

/// A first "nothing to send" may only say that a burst of writes is over; the driver is asked again at once.
void CommunicationLoop::idle()
{
    if (++m_idleCalls < 2)
        return;
    if (m_hasPolled) { // every unit is off: a pass without requests
        m_pass.restart();
        nextPass();
    }
    rest(m_clock.elapsed() + pauseMs);
}

void CommunicationLoop::rest(qint64 untilMs)
{
    std::unique_lock<std::mutex> lock(m_restMutex);
    m_wake.wait_for(lock, std::chrono::milliseconds(untilMs - m_clock.elapsed()),
                    [this] { return m_stop.load(); });
}
