// SPDX-License-Identifier: MIT
#include "read_requests.h"

#include "mbap.h"
#include "transaction.h"

#include "../driver/arithmetic.h"
#include "../varlists/areas.h"

namespace {

/// `quantity` in bits or registers, as the request asks; `dataBytes` as the reply brings.
void queueRead(const RW_VAR &var, mbap::FunctionCode function, int quantity, int dataBytes)
{
    transaction::append(mbap::request(var.station, function, var.startAddress, quantity),
                        transaction::readReply(var.station, dataBytes), var);
    transaction::expectReplies(1);
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
    const int bits = arithmetic::wrapped(qint64(var->dataLength) * 8);
    queueRead(*var, var->area == AreaCoils ? mbap::ReadCoils : mbap::ReadDiscreteInputs, bits,
              var->dataLength);
}

void ReadAnalog(RW_VAR *var)
{
    if (var->area != AreaInputRegisters && var->area != AreaHoldingRegisters)
        return;
    const int bytes = arithmetic::wrapped(qint64(var->dataLength) * 2);
    const bool input = var->area == AreaInputRegisters;
    queueRead(*var, input ? mbap::ReadInputRegisters : mbap::ReadHoldingRegisters, var->dataLength, bytes);
}
