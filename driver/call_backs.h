// SPDX-License-Identifier: MIT
/// \file
/// Calls the host back. A call-back that is not registered is skipped. With listMutex held.

#pragma once

#include "driver_object.h"

namespace callBacks {

enum WriteOutcome { Served = 1, GivenUp = 2 };

inline void writeDone(const RW_VAR &entry, WriteOutcome outcome)
{
    if (PLC_driver.writeDoneCallBack)
        PLC_driver.writeDoneCallBack(PLC_driver.comInfo->hostChannel, entry.hostId, entry.hostItem, outcome);
}

/// The list that goes along is empty and its end is the driver's: what the host puts in is discarded.
inline void itemNotify(int hostId)
{
    QList<RW_VAR> list;
    if (PLC_driver.itemNotifyCallBack)
        PLC_driver.itemNotifyCallBack(&list, hostId, 1);
}

} // namespace callBacks
