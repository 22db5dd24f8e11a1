// SPDX-License-Identifier: MIT
/// \file
/// What became of a write, claiming nothing but what the station acknowledged. Pure.

#pragma once

#include "exit_codes.h"
#include "panel_state.h"
#include "write_queueing.h"

struct WriteOutcome
{
    ExitCode code = ExitDone;
    QString text;
};

/// From the item's way into the queue and what the communication thread reported of it.
WriteOutcome writeOutcome(const WriteItem &item, const ItemResult &result);
