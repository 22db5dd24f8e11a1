// SPDX-License-Identifier: MIT
#include "mbap.h"

#include "../driver/api/codes.h"
#include "../driver/api/steps/request_builders.h"
#include "../driver/base/modbus_wire.h"
#include "../driver/base/pending_requests.h"

#include <utility>

using namespace modbus_driver;

namespace {

void appendWrite(QByteArray frame, const RW_VAR &var)
{
    appendRequest(std::move(frame), writeEcho(var.station), var);
    expectReplies(1);
}

/// The register value in `data`, low byte first. A missing byte counts as 0.
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
    appendWrite(write(var->station, var->startAddress, var->dataLength, var->data), *var);
}

void WriteAnalog(RW_VAR *var)
{
    if (var->dataLength != 1) {
        WriteAnalog_10(var);
        return;
    }
    appendWrite(
        mbap::request(var->station, wire::WriteSingleRegister, var->startAddress, singleRegister(var->data)),
        *var);
}
