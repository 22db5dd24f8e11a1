// SPDX-License-Identifier: MIT
/// \file
/// Maps what the communication loop reports to the variables and items of the panel, and notes it in the panel's
/// state. Called by the loop on the communication thread.

#pragma once

#include "panel_state.h"

#include "../link/driver_library.h"
#include "../link/loop_observer.h"

class PanelObserver : public LoopObserver
{
public:
    /// The driver may be loaded later, but before the loop starts. Both references must outlive the observer.
    PanelObserver(const DriverLibrary &driver, const QList<Variable> &variables, PanelState &state);

    void linkIs(LinkState::State state, LinkCause cause, TransactionNumbers::Habit numbers) override;
    void exchangeEnded(const RW_VAR &access, const Exchange &exchange, int status,
                       const Exchange &reason) override;
    void entryLeft(int hostItem, int outcome) override;
    void unitSwitched(int unit, bool isOn) override;
    void passEnded() override;
    void loopEnded() override;

private:
    struct Place
    {
        Variable variable;
        Span span;
    };

    std::vector<std::size_t> variablesOf(const RW_VAR &read) const;
    void noteRead(const RW_VAR &read);
    void noteFailedRead(const RW_VAR &read, const Exchange &reason, int status);
    void noteItem(const RW_VAR &access, const Exchange &exchange, int status, const Exchange &reason);

    const DriverLibrary &m_driver;
    PanelState &m_state;
    std::vector<Place> m_places; ///< of the variables, in their order
    /// Indexes of the variables in each table of a unit, ascending by their first address.
    std::map<std::pair<int, int>, std::vector<std::size_t>> m_tables;
    int m_longest = 0;                 ///< most bits or registers of a variable
    std::map<int, ItemResult> m_items; ///< by hostItem
};
