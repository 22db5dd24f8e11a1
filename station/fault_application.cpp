// SPDX-License-Identifier: MIT
#include "fault_application.h"

#include "../driver/base/modbus_wire.h"

namespace wire = modbus_driver::wire;

namespace {
// Does nothing beyond the end: an earlier fault may have cut the reply before this field.
void setByte(QByteArray &reply, int index, int value)
{
    if (index < reply.size())
        reply[index] = static_cast<char>(value);
}

void setWord(QByteArray &reply, int index, int value)
{
    setByte(reply, index, value >> 8);
    setByte(reply, index + 1, value);
}

int wrongLength(const Fault &fault, const QByteArray &reply)
{
    return fault.relative ? reply.size() - wire::LengthFieldEnd + fault.value : fault.value;
}
} // namespace

void applyFault(const Fault &fault, Delivery &delivery)
{
    switch (fault.kind) {
    case Fault::Silence:
        delivery.reply.clear();
        break;
    case Fault::Delay:
        delivery.delay += fault.value;
        break;
    case Fault::Late:
        delivery.late += fault.value;
        break;
    case Fault::Cut:
        delivery.reply.truncate(fault.value);
        break;
    case Fault::Double:
        delivery.copies = 2;
        break;
    case Fault::Repeat:
        delivery.repeatAfter = fault.value;
        break;
    case Fault::Flood:
        delivery.floodSeconds = fault.value;
        break;
    case Fault::Glue:
        delivery.heldBack = true;
        break;
    case Fault::Close:
        delivery.ending = Delivery::Close;
        break;
    case Fault::Reset:
        delivery.ending = Delivery::Reset;
        break;
    case Fault::Refuse:
        delivery.refuseSeconds = fault.value;
        break;
    case Fault::Behind:
        delivery.reply = delivery.replyBefore;
        break;
    case Fault::Unit:
        setByte(delivery.reply, wire::UnitAt, fault.value);
        break;
    case Fault::Length:
        setWord(delivery.reply, wire::LengthAt, wrongLength(fault, delivery.reply));
        break;
    case Fault::Protocol:
        setWord(delivery.reply, wire::ProtocolAt, fault.value);
        break;
    case Fault::Transaction:
        setWord(delivery.reply, wire::TransactionAt, fault.value);
        break;
    case Fault::Function:
        setByte(delivery.reply, wire::FunctionAt, fault.value);
        break;
    case Fault::Exception:
    case Fault::Greet:
        break;
    }
}
