// SPDX-License-Identifier: MIT
/// \file
/// What the communication thread has found and the main thread shows. The communication loop reports; that is mapped
/// to the variables and items of the panel. One mutex, held only for copying and counting, and never while the driver
/// is called. The main thread takes snapshots; any thread may.

#pragma once

#include "statistics.h"
#include "value_state.h"

#include "../link/driver_library.h"
#include "../link/loop_observer.h"

#include <QtCore/QElapsedTimer>

#include <condition_variable>
#include <map>
#include <mutex>
#include <vector>

/// The result of the requests that one item of the command line had queued.
struct ItemResult
{
    int served = 0;         ///< queue entries that ended well
    bool isEnded = false;   ///< the driver has called back: nothing of it is queued any more
    bool isGivenUp = false; ///< with isEnded: an entry failed, and the rest was dropped with it
    bool mayBeDone = false; ///< a write was sent and nothing tells that it was not carried out
    QString failure;        ///< of the last exchange that failed
};

struct PanelSnapshot
{
    std::vector<ValueState> values;
    std::map<int, UnitStatistics> units;
    std::map<int, ItemResult> items; ///< by hostItem
    int passes = 0;                  ///< over the poll list, ended so far
    LinkState::State link = LinkState::Connecting;
    LinkCause linkCause = LinkCause::None;
    TransactionNumbers::Habit numbers = TransactionNumbers::Unknown;
    bool isEnded = false; ///< the communication thread has ended by itself
    qint64 elapsedMicroseconds = 0;

    qint64 nowMs() const { return elapsedMicroseconds / 1000; }
    /// Items of which nothing is queued any more.
    int itemsEnded() const;
};

class PanelState : public LoopObserver
{
public:
    /// The driver may be loaded later, but before the loop starts. It must outlive the state.
    PanelState(const DriverLibrary &driver, const QList<Variable> &variables);

    PanelSnapshot snapshot() const;
    /// While on, the communication waits at the end of each pass until a snapshot of it was taken, so that none is
    /// missed. Must be off before the communication is stopped.
    void waitAtPasses(bool isOn);
    /// Waits until a pass beyond `passes` or the communication has ended, or items have; no longer than `ms`.
    void waitForNews(int passes, int itemsEnded, int ms) const;

    void linkIs(LinkState::State state, LinkCause cause, TransactionNumbers::Habit numbers) override;
    void exchangeEnded(const RW_VAR &access, const Exchange &exchange, int status,
                       const Exchange &reason) override;
    void entryLeft(int hostItem, int outcome) override;
    void unitSwitched(int unit, bool isOn) override;
    void passEnded() override;
    void loopEnded() override;

private:
    qint64 elapsedMicroseconds() const { return m_clock.nsecsElapsed() / 1000; }

    std::vector<int> variablesOf(const RW_VAR &read) const;
    ValueState &valueAt(int index) { return m_now.values[static_cast<std::size_t>(index)]; }
    void count(int unit, const Exchange &exchange);
    void noteRead(const RW_VAR &read);
    void noteFailedRead(const RW_VAR &read, const Exchange &reason, int status);
    void noteItem(const RW_VAR &access, const Exchange &exchange, int status, const Exchange &reason);

    const DriverLibrary &m_driver;
    const SpanIndex m_index;           ///< of the variables
    std::map<int, ItemResult> m_items; ///< by hostItem; the communication thread's own
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_news;
    PanelSnapshot m_now;
    bool m_waitsAtPasses = false;
    mutable int m_passTaken = 0; ///< the pass of the last snapshot
    QElapsedTimer m_clock;       ///< started once, then only read
};
