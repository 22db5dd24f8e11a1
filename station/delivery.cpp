// SPDX-License-Identifier: MIT
#include "delivery.h"

namespace {
// A reply that an earlier fault has cut may end before the field.
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
    return fault.relative ? reply.size() - 6 + fault.value : fault.value;
}
} // namespace

void befall(const Fault &fault, Delivery &delivery)
{
    switch (fault.kind) {
    case Fault::Silence:
        delivery.reply.clear();
        break;
    case Fault::Delay:
        delivery.delay += fault.value;
        break;
    case Fault::Cut:
        delivery.reply.truncate(fault.value);
        break;
    case Fault::Double:
        delivery.copies = 2;
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
    case Fault::Unit:
        setByte(delivery.reply, 6, fault.value);
        break;
    case Fault::Length:
        setWord(delivery.reply, 4, wrongLength(fault, delivery.reply));
        break;
    case Fault::Protocol:
        setWord(delivery.reply, 2, fault.value);
        break;
    case Fault::Transaction:
        setWord(delivery.reply, 0, fault.value);
        break;
    case Fault::Function:
        setByte(delivery.reply, 7, fault.value);
        break;
    case Fault::Exception:
        break;
    }
}
