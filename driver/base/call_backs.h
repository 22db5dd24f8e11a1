// SPDX-License-Identifier: MIT
/// \file
/// Calls the host's call-backs. The caller holds listMutex. A call-back that is not registered is skipped.

#pragma once

#include "../api/codes.h"
#include "../api/steps/driver_object.h"

namespace modbus_driver {

inline void callWriteDone(const RW_VAR &entry, WriteDoneOutcome outcome)
{
    if (PLC_driver.writeDoneCallBack)
        PLC_driver.writeDoneCallBack(PLC_driver.comInfo->hostChannel, entry.hostId, entry.hostItem, outcome);
}

/// The list is an empty temporary; what the host adds is discarded.
inline void callItemNotify(int hostId)
{
    QList<RW_VAR> list;
    if (PLC_driver.itemNotifyCallBack)
        PLC_driver.itemNotifyCallBack(&list, hostId, 1);
}

} // namespace modbus_driver
