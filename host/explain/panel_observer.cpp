// SPDX-License-Identifier: MIT
#include "panel_observer.h"

#include "exchange_text.h"
#include "status_text.h"

#include "../../driver/api/codes.h"

using namespace modbus_driver;

namespace {

bool isGood(int status)
{
    return status == StatusDone || status == StatusRemoteAccepted;
}

/// A reply that answers the request, and yet the driver does not accept it.
bool isRefusedByDriver(const Exchange &exchange)
{
    return exchange.end == Exchange::Answered && exceptionCode(exchange.reply) < 0;
}

QString failureText(const Exchange &exchange, int status)
{
    return isRefusedByDriver(exchange)
               ? QStringLiteral("%1 (driver status %2)").arg(statusText(status)).arg(status)
               : exchangeText(exchange);
}

} // namespace

PanelObserver::PanelObserver(const DriverLibrary &driver, const QList<Variable> &variables, PanelState &state)
    : m_driver(driver), m_state(state)
{
    for (const Variable &variable : variables)
        m_places.push_back({variable, spanOf(variable)});
}

void PanelObserver::linkIs(LinkState::State state, LinkCause cause)
{
    m_state.noteLink(state, cause);
}

void PanelObserver::exchangeEnded(const RW_VAR &access, const Exchange &exchange, int status)
{
    m_state.noteExchange(access.station, exchange);
    if (access.rwFlag == AccessRead && isGood(status))
        noteRead(access);
    else if (access.rwFlag == AccessRead && exchange.cause != LinkCause::Stopped)
        m_state.noteFailure(spanOf(access), failureText(exchange, status));
    if (access.hostItem != HostItemOfPoll)
        noteItem(access, exchange, status);
}

void PanelObserver::noteRead(const RW_VAR &read)
{
    const Span span = spanOf(read);
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const Variable &variable = m_places[i].variable;
        if (!m_places[i].span.overlaps(span))
            continue;
        QByteArray value;
        m_driver.getRegisterData(0, variable.area, variable.addressText, variable.unit, value,
                                 variable.driverCount());
        m_state.noteValue(i, span, value);
    }
}

void PanelObserver::noteItem(const RW_VAR &access, const Exchange &exchange, int status)
{
    ItemResult &item = m_items[access.hostItem];
    if (!isGood(status)) {
        item.failure = failureText(exchange, status);
        item.mayBeDone |= access.rwFlag == AccessWrite && exchange.end == Exchange::NoReply;
    } else if (access.subIndex != SubIndexReadHalf) {
        item.mayBeDone = false;
        ++item.served;
    }
    m_state.noteItem(access.hostItem, item);
}

void PanelObserver::entryLeft(int hostItem, int outcome)
{
    ItemResult &item = m_items[hostItem];
    item.isEnded = true;
    item.isGivenUp = outcome == WriteDoneGivenUp;
}

void PanelObserver::unitSwitched(int unit, bool isOn)
{
    m_state.noteUnitOff(unit, !isOn);
}

void PanelObserver::passEnded()
{
    m_state.notePass();
}

void PanelObserver::loopEnded()
{
    m_state.noteEnd();
}
