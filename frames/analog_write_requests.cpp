// SPDX-License-Identifier: MIT
#include "analog_write_requests.h"

#include "mbap.h"
#include "transaction.h"

#include "../varlists/areas.h"

#include <utility>

namespace {

void queue(QByteArray frame, const RW_VAR &var)
{
    transaction::append(std::move(frame), transaction::writeEcho(var.station), var);
    transaction::expectReplies(1);
}

/// A byte that is missing counts as 0.
int singleRegister(const QByteArray &data)
{
    const int low = data.size() > 0 ? static_cast<quint8>(data.at(0)) : 0;
    const int high = data.size() > 1 ? static_cast<quint8>(data.at(1)) : 0;
    return low + 256 * high;
}

} // namespace

void WriteAnalog_10(RW_VAR *var)
{
    const auto write = var->area == AreaHoldingRegisters ? mbap::writeRegisters : mbap::writePairs;
    queue(write(var->station, var->startAddress, var->dataLength, var->data), *var);
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
