// SPDX-License-Identifier: MIT
// Writing one bit of a holding register: read the register, change the bit, write the register back. Both
// halves are built here. completeWriteHalf (driver/base/pending_requests.cpp) puts the changed value into the
// write half when the reply to the read half is stored.
#include "mbap.h"

#include "../driver/api/codes.h"
#include "../driver/api/steps/request_builders.h"
#include "../driver/base/arithmetic.h"
#include "../driver/base/modbus_wire.h"
#include "../driver/base/pending_requests.h"

using namespace modbus_driver;

namespace {

const int placeholder = 0x3030; // replaced by completeWriteHalf

/// The frame asks for one register, but the expected reply is as long as the variable's own dataLength says.
void queueReadHalf(const RW_VAR &var, int reg)
{
    RW_VAR half = var;
    half.rwFlag = AccessRead;
    half.startAddress = reg;
    half.subIndex = SubIndexReadHalf;
    const int bytes = wrapped(qint64(var.dataLength) * 2);
    appendRequest(mbap::request(var.station, wire::ReadHoldingRegisters, reg, 1),
                  readReply(var.station, bytes), half);
}

void queueWriteHalf(const RW_VAR &var, int reg)
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
    const int reg = var->startAddress / 16; // rounds towards zero: bit -1 is of register 0
    queueReadHalf(*var, reg);
    queueWriteHalf(*var, reg);
    expectReplies(2);
}
