// SPDX-License-Identifier: MIT
/// \file
/// The outcome of a write. It claims only what the station acknowledged. Pure.

#pragma once

#include "panel_state.h"
#include "write_queueing.h"

struct WriteOutcome
{
    /// In rising order of severity.
    enum End { Done, Failed, Unknown };

    End end = Done;
    QString text;
};

/// From how the item was queued and what the communication thread reported of it.
WriteOutcome writeOutcome(const WriteItem &item, const ItemResult &result);
