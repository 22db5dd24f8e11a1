// SPDX-License-Identifier: MIT
// Writes one bit of a holding register: reads the register, changes the bit, writes the register. This file
// builds both requests, the read half and the write half. When the reply to the read half is stored,
// completeWriteHalf (driver/base/pending_requests.cpp) puts the changed value into the write half.
#include "mbap.h"

#include "../driver/api/codes.h"
#include "../driver/api/steps/request_builders.h"
#include "../driver/base/arithmetic.h"
#include "../driver/base/modbus_wire.h"
#include "../driver/base/pending_requests.h"

using namespace modbus_driver;

namespace {

const int placeholder = 0x3030; // the value of the write half until completeWriteHalf replaces it

/// The frame reads one register, but the expected reply has dataLength registers. Hosts rely on it.
void appendReadHalf(const RW_VAR &var, int reg)
{
    RW_VAR half = var;
    half.rwFlag = AccessRead;
    half.startAddress = reg;
    half.subIndex = SubIndexReadHalf;
    const int bytes = wrapped(qint64(var.dataLength) * 2);
    appendRequest(mbap::request(var.station, wire::ReadHoldingRegisters, reg, 1),
                  readReply(var.station, bytes), half);
}

void appendWriteHalf(const RW_VAR &var, int reg)
{
    RW_VAR half = var;
    half.rwFlag = AccessWrite;
    half.subIndex = 0;
    appendRequest(mbap::request(var.station, wire::WriteSingleRegister, reg, placeholder),
                  writeEcho(var.station), half);
}

} // namespace

void WriteBool_WordOfBit(RW_VAR *var)
{
    if (var->station == StationBroadcast)
        return;
    const int reg = var->startAddress / 16; // rounds towards zero: bit -1 gives register 0
    appendReadHalf(*var, reg);
    appendWriteHalf(*var, reg);
    expectReplies(2);
}
