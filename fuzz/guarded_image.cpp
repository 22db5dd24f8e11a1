// SPDX-License-Identifier: MIT
#include "guarded_image.h"

#include "modbus_tcpip_rtu_m.h"

#include <memory>

using namespace modbus_driver;

namespace guardedImage {

namespace {

struct Arrays
{
    std::unique_ptr<quint8[]> bits{new quint8[ImageBitBytes]()};
    std::unique_ptr<quint16[]> registers{new quint16[ImageRegisters]()};
};

const Arrays &arrays()
{
    static const Arrays only;
    return only;
}

const int tableOf[] = {ImageBits, ImageRegisterBits, ImageRegisters, ImageRegisters,
                       ImageBits, ImageRegisterBits, ImageRegisters, ImageRegisters};

/// A long access begins near the table's end, where it costs little time and would go too far.
int startOf(int start, int count, int table)
{
    return count > 240 ? qMax(start, table - 240) : start;
}

} // namespace

void store(QByteArray *reply)
{
    SaveBitToUC(reply, arrays().bits.get());
    SaveWordToUS(reply, arrays().registers.get());
}

void pack(Script *script)
{
    quint8 *bits = arrays().bits.get();
    quint16 *registers = arrays().registers.get();
    const int routine = script->byte() % 8, count = script->number();
    const int start = startOf(script->number(), count, tableOf[routine]);
    QByteArray in = script->bytes(script->byte() % 64), out = in;
    switch (routine) {
    case 0:
        return GetBitFromUC(out, bits, start, count);
    case 1:
        return GetBitFromUS(out, registers, start, count);
    case 2:
        return GetWordFromUS(out, registers, start, count);
    case 3:
        return GetWordFromUI(out, registers, start, count);
    case 4:
        return SetBitToUC(start, bits, &in, count);
    case 5:
        return SetBitToUS(start, registers, &in, count);
    case 6:
        return SetWordToUS(start, registers, &in, count);
    default:
        return SetWordToUI(start, registers, &in, count);
    }
}

} // namespace guardedImage
