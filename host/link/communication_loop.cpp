// SPDX-License-Identifier: MIT
#include "communication_loop.h"

#include "exception_codes.h"

#include "../../driver/api/codes.h"

using namespace modbus_driver;

namespace {

const int pauseMs = 20; // between two looks at a driver with nothing to send

CommunicationLoop *running = nullptr; // for the call-back, which has no other way to find its loop

/// The unit is not there, as its gateway or its silence tells. Any other exception comes from the unit itself.
bool isUnanswered(const Exchange &exchange)
{
    const int exception = exceptionCode(exchange.reply);
    return exchange.end == Exchange::NoReply || exception == ExceptionGatewayPath ||
           exception == ExceptionGatewayTarget;
}

} // namespace

CommunicationLoop::CommunicationLoop(const DriverLibrary &driver, CommSettings &settings,
                                     const ConnectionOptions &connection, const LoopOptions &options,
                                     const LinkTrace &trace, LoopObserver &observer)
    : m_driver(driver), m_settings(settings), m_options(options), m_observer(observer),
      m_connection(connection, trace, m_stop), m_units(options.offAfter, options.retryOffMs),
      m_passEnd(options.everyMs)
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
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
}

void CommunicationLoop::run()
{
    running = this;
    if (!openLink())
        m_stop = true;
    m_passEnd = Deadline(m_options.everyMs);
    while (!m_stop)
        communicate();
    running = nullptr;
    m_observer.loopEnded();
}

/// For the first time. While a link is waited for, passes end without requests.
bool CommunicationLoop::openLink()
{
    for (;;) {
        const bool isOpen = m_connection.open();
        m_observer.linkIs(m_connection.state(), m_connection.cause(), m_connection.numbers());
        if (isOpen || m_stop || !m_options.waitsForLink)
            return isOpen;
        m_connection.pause(Deadline(pauseMs));
        if (m_passEnd.isOver()) {
            m_passEnd = Deadline(m_options.everyMs);
            m_observer.passEnded();
        }
    }
}

/// One call of the driver's cycle, with the exchange that it asks for.
void CommunicationLoop::communicate()
{
    for (int unit : m_units.due(m_clock.elapsed()))
        switchUnit(unit, true);
    const Protocol *request = m_driver.nextRequest();
    if (!request)
        return idle();
    m_idleCalls = 0;
    if (!m_isRetry && request->var.hostItem == HostItemOfPoll && m_pass.isOverAt(request->var))
        nextPass();
    if (!m_stop)
        serve(*request);
}

/// One request, one reply or none.
void CommunicationLoop::serve(const Protocol &request)
{
    const Protocol asked = request; // the driver's record may end with handReply
    const Exchange exchange = m_connection.exchange(asked);
    const bool isUnsentRetry = m_isRetry && exchange.end == Exchange::NotSent;
    const int status = handBack(asked, exchange);
    m_isRetry = status == StatusRetry;
    m_hasPolled = m_hasPolled || asked.var.hostItem == HostItemOfPoll;
    m_observer.linkIs(m_connection.state(), m_connection.cause(), m_connection.numbers());
    m_observer.exchangeEnded(asked.var, exchange, status, isUnsentRetry ? m_lastSent : exchange);
    judgeUnit(asked.var.station, exchange, status);
    if (m_isRetry)
        m_lastSent = exchange;
}

/// Hands the reply to the driver and returns its status. Some requests are given up at once, whatever retries are left:
/// one that could not be sent, since the connection has waited for the link already and queued writes must not go out
/// minutes after somebody entered them; and a write that the station is carrying out.
int CommunicationLoop::handBack(const Protocol &request, const Exchange &exchange)
{
    const bool isBeingDone =
        request.var.rwFlag == AccessWrite && exceptionCode(exchange.reply) == ExceptionAcknowledged;
    const int retryLimit = m_settings.retryLimit;
    if (exchange.end == Exchange::NotSent || isBeingDone)
        m_settings.retryLimit = 0;
    QByteArray reply = exchange.reply;
    const int status = m_driver.handReply(&reply, reply.size())->status;
    m_settings.retryLimit = retryLimit;
    if (isGoodStatus(status))
        m_settings.failCount = 0; // the driver counts over successes; a retry belongs to one request
    return status;
}

void CommunicationLoop::writeDone(int, int, int hostItem, int outcome)
{
    if (running)
        running->m_observer.entryLeft(hostItem, outcome);
}

void CommunicationLoop::judgeUnit(int unit, const Exchange &exchange, int status)
{
    if (exchange.end == Exchange::NotSent || exchange.cause == LinkCause::Stopped || m_isRetry)
        return;
    if (!isUnanswered(exchange))
        m_units.answered(unit);
    else if (!isGoodStatus(status) && m_units.gaveUp(unit, m_clock.elapsed()))
        switchUnit(unit, false);
}

/// Requests for a unit that is off stay in the driver's queues.
void CommunicationLoop::switchUnit(int unit, bool on)
{
    m_driver.enableStation(unit, on ? 1 : 0);
    m_observer.unitSwitched(unit, on);
}

/// The first request of the next pass is already built; it waits here until the pass is due.
void CommunicationLoop::nextPass()
{
    m_observer.passEnded();
    ++m_passes;
    if (m_options.passes > 0 && m_passes >= m_options.passes) {
        m_stop = true;
        return;
    }
    m_connection.pause(m_passEnd);
    m_passEnd = Deadline(m_options.everyMs);
}

/// A first "nothing to send" may only end a burst of writes; so the driver is asked again at once.
void CommunicationLoop::idle()
{
    if (++m_idleCalls < 2)
        return;
    if (m_hasPolled) { // every unit is off: a pass without requests
        m_pass.restart();
        nextPass();
    }
    m_connection.pause(Deadline(pauseMs));
}
