// SPDX-License-Identifier: MIT
#include "analog_write_requests.h"

#include "mbap.h"
#include "transaction.h"

#include "../varlists/areas.h"

namespace {

void queue(const QByteArray &frame, const RW_VAR &var)
{
    transaction::append(frame, transaction::writeEcho(var.station), var);
    transaction::expectReplies(1);
}

/// Register data without its tail counts as missing; a missing byte of a single register is 0.
int singleRegister(const QByteArray &data)
{
    const int low = data.size() > 0 ? static_cast<quint8>(data.at(0)) : 0;
    const int high = data.size() > 1 ? static_cast<quint8>(data.at(1)) : 0;
    return low + 256 * high;
}

} // namespace

void WriteAnalog_10(RW_VAR *var)
{
    const QByteArray wire = var->area == AreaHoldingRegisters
                                ? mbap::wireRegisters(var->data, var->dataLength)
                                : mbap::wirePairs(var->data, var->dataLength);
    queue(mbap::writeRegisters(var->station, var->startAddress, var->dataLength, wire), *var);
}

void WriteAnalog(RW_VAR *var)
{
    if (var->dataLength != 1) {
        WriteAnalog_10(var);
        return;
    }
    queue(
        mbap::request(var->station, mbap::WriteSingleRegister, var->startAddress, singleRegister(var->data)),
        *var);
}
