// SPDX-License-Identifier: MIT
#include "panel_observer.h"

#include "exchange_text.h"

#include "../link/exception_codes.h"

#include "../../driver/api/codes.h"

#include <algorithm>

using namespace modbus_driver;

namespace {

bool isGood(int status)
{
    return status == StatusDone || status == StatusRemoteAccepted;
}

/// Whether a write that ended so may have been carried out, all or in part.
bool mayBeDone(const Exchange &exchange)
{
    const int exception = exceptionCode(exchange.reply);
    return exchange.end == Exchange::NoReply || (exception >= 0 && isWriteInDoubt(exception));
}

} // namespace

PanelObserver::PanelObserver(const DriverLibrary &driver, const QList<Variable> &variables, PanelState &state)
    : m_driver(driver), m_state(state)
{
    for (const Variable &variable : variables)
        m_places.push_back({variable, spanOf(variable)});
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const Span &span = m_places[i].span;
        m_tables[{span.unit, span.area}].push_back(i);
        m_longest = std::max(m_longest, span.count);
    }
    for (auto &table : m_tables)
        std::sort(table.second.begin(), table.second.end(), [this](std::size_t a, std::size_t b) {
            return m_places[a].span.first < m_places[b].span.first;
        });
}

void PanelObserver::linkIs(LinkState::State state, LinkCause cause, TransactionNumbers::Habit numbers)
{
    m_state.noteLink(state, cause, numbers);
}

void PanelObserver::exchangeEnded(const RW_VAR &access, const Exchange &exchange, int status,
                                  const Exchange &reason)
{
    m_state.noteExchange(access.station, exchange);
    if (access.rwFlag == AccessRead && access.subIndex != SubIndexReadHalf) {
        if (isGood(status))
            noteRead(access);
        else if (exchange.cause != LinkCause::Stopped)
            noteFailedRead(access, reason, status);
    }
    if (access.hostItem != HostItemOfPoll)
        noteItem(access, exchange, status, reason);
}

/// The variables that a read belongs to: a polled request serves all that it overlaps, a one-shot read only its own.
std::vector<std::size_t> PanelObserver::variablesOf(const RW_VAR &read) const
{
    if (read.hostItem != HostItemOfPoll)
        return {static_cast<std::size_t>(read.hostItem)};
    const Span span = spanOf(read);
    const auto table = m_tables.find({span.unit, span.area});
    if (table == m_tables.end())
        return {};
    const auto isBefore = [this](std::size_t index, int address) {
        return m_places[index].span.first < address;
    };
    std::vector<std::size_t> found;
    auto at = std::lower_bound(table->second.begin(), table->second.end(), span.first - m_longest, isBefore);
    for (; at != table->second.end() && m_places[*at].span.first < span.end(); ++at) {
        if (m_places[*at].span.overlaps(span))
            found.push_back(*at);
    }
    return found;
}

void PanelObserver::noteRead(const RW_VAR &read)
{
    const Span span = spanOf(read);
    for (const std::size_t index : variablesOf(read)) {
        const Variable &variable = m_places[index].variable;
        QByteArray value;
        m_driver.getRegisterData(0, variable.area, variable.addressText, variable.unit, value,
                                 variable.driverCount());
        m_state.noteValue(index, span, value);
    }
}

void PanelObserver::noteFailedRead(const RW_VAR &read, const Exchange &reason, int status)
{
    const Span span = spanOf(read);
    RW_VAR own = read; // what the request asks for this variable, so that advice names its address
    for (const std::size_t index : variablesOf(read)) {
        own.startAddress = std::max(span.first, m_places[index].span.first);
        m_state.noteFailure(index, span, failureText(own, reason, status));
    }
}

void PanelObserver::noteItem(const RW_VAR &access, const Exchange &exchange, int status,
                             const Exchange &reason)
{
    ItemResult &item = m_items[access.hostItem];
    if (!isGood(status)) {
        item.failure = failureText(access, reason, status);
        item.mayBeDone |= access.rwFlag == AccessWrite && mayBeDone(exchange);
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
