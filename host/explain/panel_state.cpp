// SPDX-License-Identifier: MIT
#include "panel_state.h"

#include "exchange_text.h"

#include "../link/exception_codes.h"

#include "../../driver/api/codes.h"

#include <algorithm>
#include <chrono>

using namespace modbus_driver;
using Lock = std::unique_lock<std::mutex>;

namespace {

/// Whether a write that ended so may have been carried out, all or in part.
bool mayBeDone(const Exchange &exchange)
{
    const int exception = exceptionCode(exchange.reply);
    return exchange.end == Exchange::NoReply || (exception >= 0 && isWriteInDoubt(exception));
}

std::vector<Span> spansOf(const QList<Variable> &variables)
{
    std::vector<Span> spans;
    for (const Variable &variable : variables)
        spans.push_back(spanOf(variable));
    return spans;
}

} // namespace

int PanelSnapshot::itemsEnded() const
{
    return static_cast<int>(
        std::count_if(items.begin(), items.end(), [](const auto &item) { return item.second.isEnded; }));
}

PanelState::PanelState(const DriverLibrary &driver, const QList<Variable> &variables)
    : m_driver(driver), m_index(spansOf(variables))
{
    for (const Variable &variable : variables)
        m_now.values.emplace_back(variable);
    m_clock.start();
}

PanelSnapshot PanelState::snapshot() const
{
    Lock lock(m_mutex);
    PanelSnapshot now = m_now;
    now.elapsedMicroseconds = elapsedMicroseconds();
    m_passTaken = m_now.passes;
    m_news.notify_all();
    return now;
}

void PanelState::waitAtPasses(bool isOn)
{
    Lock lock(m_mutex);
    m_waitsAtPasses = isOn;
    m_news.notify_all();
}

void PanelState::waitForNews(int passes, int itemsEnded, int ms) const
{
    Lock lock(m_mutex);
    m_news.wait_for(lock, std::chrono::milliseconds(ms), [&] {
        return m_now.isEnded || m_now.passes > passes || m_now.itemsEnded() > itemsEnded;
    });
}

void PanelState::linkIs(LinkState::State state, LinkCause cause, TransactionNumbers::Habit numbers)
{
    Lock lock(m_mutex);
    m_now.link = state;
    m_now.linkCause = cause;
    m_now.numbers = numbers;
}

void PanelState::exchangeEnded(const RW_VAR &access, const Exchange &exchange, int status,
                               const Exchange &reason)
{
    count(access.station, exchange);
    if (access.rwFlag == AccessRead && access.subIndex != SubIndexReadHalf) {
        if (isGoodStatus(status))
            noteRead(access);
        else if (exchange.cause != LinkCause::Stopped)
            noteFailedRead(access, reason, status);
    }
    if (access.hostItem != HostItemOfPoll)
        noteItem(access, exchange, status, reason);
}

void PanelState::count(int unit, const Exchange &exchange)
{
    Lock lock(m_mutex);
    const int previous = exchange.before.unit;
    if (previous >= 0)
        m_now.units[previous].add(exchange.before);
    for (const int late : exchange.before.lateUnits)
        ++m_now.units[late >= 0 ? late : previous >= 0 ? previous : unit].late;
    m_now.units[unit].add(exchange);
}

/// The variables that a read belongs to: a polled request serves all that it overlaps, a one-shot read only its own.
std::vector<int> PanelState::variablesOf(const RW_VAR &read) const
{
    return read.hostItem == HostItemOfPoll ? m_index.overlapping(spanOf(read))
                                           : std::vector<int>{read.hostItem};
}

void PanelState::noteRead(const RW_VAR &read)
{
    for (const int index : variablesOf(read)) {
        ValueState &value = valueAt(index);
        const Variable &variable = value.variable();
        QByteArray bytes;
        m_driver.getRegisterData(0, variable.area, value.addressText(), variable.unit, bytes,
                                 variable.driverCount());
        Lock lock(m_mutex);
        value.store(spanOf(read), bytes, elapsedMicroseconds() / 1000);
    }
}

void PanelState::noteFailedRead(const RW_VAR &read, const Exchange &reason, int status)
{
    RW_VAR own = read; // what the request asks for this variable, so that advice names its address
    for (const int index : variablesOf(read)) {
        own.startAddress = std::max(read.startAddress, valueAt(index).span().first);
        const QString why = failureText(own, reason, status, valueAt(index).variable().base);
        Lock lock(m_mutex);
        valueAt(index).fail(spanOf(read), why);
    }
}

void PanelState::noteItem(const RW_VAR &access, const Exchange &exchange, int status, const Exchange &reason)
{
    ItemResult &item = m_items[access.hostItem];
    if (!isGoodStatus(status)) {
        const auto index = static_cast<std::size_t>(access.hostItem);
        const int base = index < m_now.values.size() ? m_now.values[index].variable().base : 0;
        item.failure = failureText(access, reason, status, base);
        item.mayBeDone |= access.rwFlag == AccessWrite && mayBeDone(exchange);
    } else if (access.subIndex != SubIndexReadHalf) {
        item.mayBeDone = false;
        ++item.served;
    }
    Lock lock(m_mutex);
    m_now.items[access.hostItem] = item;
    m_news.notify_all();
}

/// Noted with the exchange, which is reported next.
void PanelState::entryLeft(int hostItem, int outcome)
{
    ItemResult &item = m_items[hostItem];
    item.isEnded = true;
    item.isGivenUp = outcome == WriteDoneGivenUp;
}

void PanelState::unitSwitched(int unit, bool isOn)
{
    Lock lock(m_mutex);
    m_now.units[unit].isOff = !isOn;
}

void PanelState::passEnded()
{
    Lock lock(m_mutex);
    ++m_now.passes;
    m_news.notify_all();
    m_news.wait(lock, [this] { return !m_waitsAtPasses || m_passTaken == m_now.passes; });
}

void PanelState::loopEnded()
{
    Lock lock(m_mutex);
    m_now.isEnded = true;
    m_news.notify_all();
}
