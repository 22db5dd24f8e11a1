// SPDX-License-Identifier: MIT
#include "mbap.h"

#include "../driver/api/codes.h"
#include "../driver/api/steps/request_builders.h"
#include "../driver/base/arithmetic.h"
#include "../driver/base/modbus_wire.h"
#include "../driver/base/pending_requests.h"

using namespace modbus_driver;

namespace {

/// `quantity` is that of the request, in bits or registers. `dataBytes` is the data length of the reply.
void appendRead(const RW_VAR &var, wire::FunctionCode function, int quantity, int dataBytes)
{
    appendRequest(mbap::request(var.station, function, var.startAddress, quantity),
                  readReply(var.station, dataBytes), var);
    expectReplies(1);
}

} // namespace

void ReadRegister(RW_VAR *var)
{
    switch (var->area) {
    case AreaCoils:
    case AreaDiscreteInputs:
        ReadBool(var);
        break;
    case AreaInputRegisters:
    case AreaHoldingRegisters:
        ReadAnalog(var);
        break;
    default:
        break;
    }
}

void ReadBool(RW_VAR *var)
{
    if (var->area != AreaCoils && var->area != AreaDiscreteInputs)
        return;
    const int bits = wrapped(qint64(var->dataLength) * 8);
    appendRead(*var, var->area == AreaCoils ? wire::ReadCoils : wire::ReadDiscreteInputs, bits,
               var->dataLength);
}

void ReadAnalog(RW_VAR *var)
{
    if (var->area != AreaInputRegisters && var->area != AreaHoldingRegisters)
        return;
    const int bytes = wrapped(qint64(var->dataLength) * 2);
    const bool input = var->area == AreaInputRegisters;
    appendRead(*var, input ? wire::ReadInputRegisters : wire::ReadHoldingRegisters, var->dataLength, bytes);
}
