// SPDX-License-Identifier: MIT
#include "panel_state.h"

#include <algorithm>
#include <chrono>

using Lock = std::unique_lock<std::mutex>;

int PanelSnapshot::itemsEnded() const
{
    return static_cast<int>(
        std::count_if(items.begin(), items.end(), [](const auto &item) { return item.second.isEnded; }));
}

PanelState::PanelState(const QList<Variable> &variables)
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

void PanelState::noteExchange(int unit, const Exchange &exchange)
{
    Lock lock(m_mutex);
    if (exchange.before.unit >= 0)
        m_now.units[exchange.before.unit].add(exchange.before);
    for (const int late : exchange.before.lateUnits)
        ++m_now.units[late >= 0 ? late : exchange.before.unit >= 0 ? exchange.before.unit : unit].late;
    m_now.units[unit].add(exchange);
}

void PanelState::noteValue(std::size_t index, const Span &read, const QByteArray &value)
{
    Lock lock(m_mutex);
    m_now.values[index].store(read, value, elapsedMicroseconds() / 1000);
}

void PanelState::noteFailure(std::size_t index, const Span &read, const QString &why)
{
    Lock lock(m_mutex);
    m_now.values[index].fail(read, why);
}

void PanelState::noteItem(int item, const ItemResult &result)
{
    Lock lock(m_mutex);
    m_now.items[item] = result;
    m_news.notify_all();
}

void PanelState::noteUnitOff(int unit, bool isOff)
{
    Lock lock(m_mutex);
    m_now.units[unit].isOff = isOff;
}

void PanelState::noteLink(LinkState::State link, LinkCause cause, TransactionNumbers::Habit numbers)
{
    Lock lock(m_mutex);
    m_now.link = link;
    m_now.linkCause = cause;
    m_now.numbers = numbers;
}

void PanelState::notePass()
{
    Lock lock(m_mutex);
    ++m_now.passes;
    m_news.notify_all();
    m_news.wait(lock, [this] { return !m_waitsAtPasses || m_passTaken == m_now.passes; });
}

void PanelState::noteEnd()
{
    Lock lock(m_mutex);
    m_now.isEnded = true;
    m_news.notify_all();
}
