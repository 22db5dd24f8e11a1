// SPDX-License-Identifier: MIT
/// \file
/// Modbus exception codes. Constants only.

#pragma once

#include <initializer_list>

enum ExceptionCode {
    ExceptionIllegalFunction = 1,
    ExceptionIllegalAddress = 2,
    ExceptionIllegalValue = 3,
    ExceptionDeviceFailure = 4,
    ExceptionAcknowledged = 5, ///< accepted, and still being carried out: must not be sent again
    ExceptionBusy = 6,
    ExceptionMemoryParity = 8,
    ExceptionGatewayPath = 10,   ///< a gateway has no path to the unit
    ExceptionGatewayTarget = 11, ///< the unit did not answer its gateway
};

/// Whether a write that was answered by this exception may have been carried out, in part or later.
inline bool isWriteInDoubt(int exception)
{
    for (int refusal : {ExceptionIllegalFunction, ExceptionIllegalAddress, ExceptionIllegalValue,
                        ExceptionBusy, ExceptionMemoryParity, ExceptionGatewayPath}) {
        if (exception == refusal)
            return false;
    }
    return true;
}
