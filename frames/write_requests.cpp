// SPDX-License-Identifier: MIT
#include "mbap.h"

#include "../driver/api/codes.h"
#include "../driver/api/steps/image_access.h"
#include "../driver/api/steps/request_builders.h"
#include "../driver/base/call_backs.h"
#include "../driver/base/modbus_wire.h"
#include "../driver/base/pending_requests.h"

using namespace modbus_driver;

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
    callItemNotify(var->hostId);
    if (!PLC_driver.lastFailed && var->area != AreaHoldingRegisterBit)
        WriteDataToLocal(var);
}

void WriteBool(RW_VAR *var)
{
    const bool on = !var->data.isEmpty() && var->data.at(0) == 1;
    appendRequest(
        mbap::request(var->station, wire::WriteSingleCoil, var->startAddress, on ? wire::CoilOn : 0),
        writeEcho(var->station), *var);
    expectReplies(1);
}
