// SPDX-License-Identifier: MIT
/// \file
/// What the communication loop reports to the host around it. All calls come from the communication thread, one at
/// a time; an implementation locks what it shares with other threads.

#pragma once

#include "exchange.h"
#include "transaction_numbers.h"

#include "../../driver/api/codes.h"
#include "../../driver/api/records.h"

/// Whether the driver took a reply as one that serves the request.
inline bool isGoodStatus(int status)
{
    return status == modbus_driver::StatusDone || status == modbus_driver::StatusRemoteAccepted;
}

class LoopObserver
{
public:
    virtual ~LoopObserver() = default;

    /// The connection was opened or dropped, or is still as it was; called after every exchange.
    virtual void linkIs(LinkState::State state, LinkCause cause, TransactionNumbers::Habit numbers) = 0;
    /// The driver has judged the exchange with `status`, a StatusCode. After a good read the driver's image holds its
    /// values; now is the moment to fetch them, while value and age belong together. `reason` explains a failure: it is
    /// the exchange, or the one before it when this one was a retry that could not be sent.
    virtual void exchangeEnded(const RW_VAR &access, const Exchange &exchange, int status,
                               const Exchange &reason) = 0;
    /// The driver's writeDone call-back: an entry of this hostItem has left its queue. Comes before the exchangeEnded
    /// of the same exchange, with the driver's listMutex held: it must not call the driver. `outcome` is a
    /// WriteDoneOutcome.
    virtual void entryLeft(int hostItem, int outcome) = 0;
    virtual void unitSwitched(int unit, bool isOn) = 0;
    /// All requests of the poll list were served once.
    virtual void passEnded() = 0;
    /// The communication thread is about to end.
    virtual void loopEnded() = 0;
};
