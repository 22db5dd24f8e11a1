// SPDX-License-Identifier: MIT
#include "bit_in_register_write.h"

#include "mbap.h"
#include "transaction.h"

#include "../driver/arithmetic.h"

namespace {

const int placeholder = 0x3030; // replaced by the register's value when the read half is answered

/// The read asks for one register, yet expects the reply that the variable's own length makes.
void queueReadHalf(const RW_VAR &var, int reg)
{
    RW_VAR half = var;
    half.rwFlag = 0;
    half.startAddress = reg;
    half.subIndex = -1;
    const int bytes = arithmetic::wrapped(qint64(var.dataLength) * 2);
    transaction::append(mbap::request(var.station, mbap::ReadHoldingRegisters, reg, 1),
                        transaction::readReply(var.station, bytes), half);
}

void queueWriteHalf(const RW_VAR &var, int reg)
{
    RW_VAR half = var;
    half.rwFlag = 1;
    half.subIndex = 0;
    transaction::append(mbap::request(var.station, mbap::WriteSingleRegister, reg, placeholder),
                        transaction::writeEcho(var.station), half);
}

} // namespace

void WriteBool_WordOfBit(RW_VAR *var)
{
    if (var->station == 0)
        return;
    const int reg = var->startAddress / 16; // towards zero: bit -1 belongs to register 0
    queueReadHalf(*var, reg);
    queueWriteHalf(*var, reg);
    transaction::expectReplies(2);
}
