// SPDX-License-Identifier: MIT
/// \file
/// Host values on their way into the image.

#pragma once

#include "../driver/export.h"
#include "../driver/records.h"

/// Writes var's data to the image or, while CommSettings::multiStation is nonzero, to the records of its
/// station. Areas 0, 3, 5 and 7; nothing for any other. startAddress and dataLength are in bits or
/// registers; data as in SetRegisterData. Takes imageMutex.
MODBUS_API void WriteDataToLocal(RW_VAR *var);
