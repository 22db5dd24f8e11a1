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

    void linkIs(LinkState::State state, LinkCause cause) override;
    void exchangeEnded(const RW_VAR &access, const Exchange &exchange, int status) override;
    void entryLeft(int hostItem, int outcome) override;
    void unitSwitched(int unit, bool isOn) override;
    void passEnded() override;
    void loopEnded() override;

private:
    void noteRead(const RW_VAR &read);
    void noteItem(const RW_VAR &access, const Exchange &exchange, int status);

    struct Place
    {
        Variable variable;
        Span span;
    };

    const DriverLibrary &m_driver;
    PanelState &m_state;
    std::vector<Place> m_places;       ///< of the variables, in their order
    std::map<int, ItemResult> m_items; ///< by hostItem
};
