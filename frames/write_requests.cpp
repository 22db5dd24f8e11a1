// SPDX-License-Identifier: MIT
#include "write_requests.h"

#include "analog_write_requests.h"
#include "bit_in_register_write.h"
#include "mbap.h"
#include "transaction.h"

#include "../driver/call_backs.h"
#include "../driver/driver_object.h"
#include "../image/local_writes.h"
#include "../varlists/areas.h"

namespace {

void build(RW_VAR *var)
{
    switch (var->area) {
    case AreaCoils:
        WriteBool(var);
        break;
    case AreaHoldingRegisterBit:
        WriteBool_WordOfBit(var);
        break;
    case AreaHoldingRegisters:
    case AreaHoldingPairs:
        WriteAnalog_10(var);
        break;
    default:
        break;
    }
}

} // namespace

void WriteRegister(RW_VAR *var)
{
    build(var);
    callBacks::itemNotify(var->hostId);
    if (!PLC_driver.lastFailed && var->area != AreaHoldingRegisterBit)
        WriteDataToLocal(var);
}

void WriteBool(RW_VAR *var)
{
    const bool on = !var->data.isEmpty() && var->data.at(0) == 1;
    transaction::append(
        mbap::request(var->station, mbap::WriteSingleCoil, var->startAddress, on ? 0xFF00 : 0),
        transaction::writeEcho(var->station), *var);
    transaction::expectReplies(1);
}
