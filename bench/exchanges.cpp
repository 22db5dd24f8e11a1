// SPDX-License-Identifier: MIT
// One request and its reply: ComCommunication and DataCom, with what queued the request where it is a write.
#include "floors.h"
#include "fresh_driver.h"
#include "work.h"

using namespace modbus_driver;

namespace bench {

namespace {

const int start = 1000;
const int bitStart = 8000;

/// A read of `quantity` registers, or of bits in `bytes` bytes.
struct Read
{
    const char *what;
    int area;
    int bytes;
    bool isBits() const { return area == AreaCoils; }
    int from() const { return isBits() ? bitStart : start; }
};

QByteArray readReply(const Read &read)
{
    QByteArray reply(9 + read.bytes, '\0');
    reply[5] = static_cast<char>(3 + read.bytes);
    reply[6] = 1;
    reply[7] = read.isBits() ? 1 : 3;
    reply[8] = static_cast<char>(read.bytes);
    for (int i = 0; i < read.bytes; ++i)
        reply[9 + i] = static_cast<char>(i * 7);
    return reply;
}

/// Asks, answers and checks that the exchange was good. Writes alone in a row get a pause after five, which
/// is not measured.
void exchange(QByteArray *reply)
{
    PLC_driver.writeBurst = 0;
    const Protocol *request = ComCommunication();
    require(request != nullptr, "the driver asked for nothing");
    keep(request->frame.constData());
    require(DataCom(reply, reply->size())->status == StatusDone, "the driver took the reply for a bad one");
}

Step prepareRead(const Read &read, ImageMode mode)
{
    freshDriver(mode);
    RW_VAR entry = readOf(read.area, read.from(), read.isBits() ? read.bytes : read.bytes / 2);
    AddListReadVar(&entry);
    QByteArray reply = readReply(read);
    return [reply]() mutable { exchange(&reply); };
}

Step prepareReadFloor(const Read &read, ImageMode mode)
{
    FloorState *floor = &freshFloor();
    const QByteArray reply = readReply(read);
    const int quantity = read.isBits() ? 8 * read.bytes : read.bytes / 2;
    const int step = read.isBits() ? 8 : 1;
    if (mode == PerStation)
        addRecords(floor, read.area, read.from(), quantity / step, step, read.isBits() ? 1 : 2);
    return [=] {
        ask(floor, read.isBits() ? 1 : 3, read.from(), quantity);
        keep(floor->frame.constData());
        if (mode == PerStation)
            answerRecords(floor, reply, read.area, read.from());
        else if (read.isBits())
            answerBits(floor, reply, read.from());
        else
            answerRegisters(floor, reply, read.from());
    };
}

void addRead(Works *works, const Read &read, ImageMode mode)
{
    const std::string name = std::string("exchange/read_") + read.what + "/" + nameOf(mode);
    works->push_back({name, [=] { return prepareRead(read, mode); }});
    works->push_back({"floor/" + name, [=] { return prepareReadFloor(read, mode); }});
}

QByteArray echo(int function)
{
    QByteArray reply(12, '\0');
    reply[5] = 6;
    reply[6] = 1;
    reply[7] = static_cast<char>(function);
    return reply;
}

/// A panel's write of registers to its acknowledgement.
Step prepareWrite(int registers, ImageMode mode)
{
    freshDriver(mode);
    const QString address = QString::number(start);
    QByteArray value(2 * registers, 'v');
    QByteArray reply = echo(16);
    return [=]() mutable {
        SetRegisterData(QString(), AreaHoldingRegisters, address, 1, value, registers, 5, 6);
        exchange(&reply);
    };
}

Step prepareWriteFloor(int registers, ImageMode mode)
{
    FloorState *floor = &freshFloor();
    const QString address = QString::number(start);
    const QByteArray value(2 * registers, 'v');
    if (mode == PerStation)
        addRecords(floor, AreaHoldingRegisters, start, registers, 1, 2);
    return [=] {
        queue(floor, address, value);
        askWrite(floor, start, floor->queue.first().data);
        if (mode == PerStation)
            mirrorRecords(floor, start, value);
        else
            mirrorRegisters(floor, start, value);
        keep(floor->frame.constData());
        answerEcho(floor);
        floor->queue.removeFirst();
    };
}

void addWrite(Works *works, const char *what, int registers, ImageMode mode)
{
    const std::string name = std::string("exchange/write_") + what + "/" + nameOf(mode);
    works->push_back({name, [=] { return prepareWrite(registers, mode); }});
    works->push_back({"floor/" + name, [=] { return prepareWriteFloor(registers, mode); }});
}

/// A bit of a register: read the register, write it back, two exchanges.
Step prepareBitWrite()
{
    freshDriver(Shared);
    const QString address = QStringLiteral("1000.3");
    QByteArray value(1, '\1');
    QByteArray readReplyBytes = readReply({"", AreaHoldingRegisters, 2});
    QByteArray reply = echo(6);
    return [=]() mutable {
        SetRegisterData(QString(), AreaHoldingRegisterBit, address, 1, value, 1, 5, 6);
        exchange(&readReplyBytes);
        exchange(&reply);
    };
}

Step prepareBitWriteFloor()
{
    FloorState *floor = &freshFloor();
    const QString address = QString::number(16 * start + 3);
    const QByteArray value(1, '\1');
    const QByteArray reply = readReply({"", AreaHoldingRegisters, 2});
    return [=] {
        queue(floor, address, value);
        ask(floor, 3, start, 1);
        answerRegisters(floor, reply, start);
        ask(floor, 6, start, floor->registers[start] | 8);
        keep(floor->frame.constData());
        answerEcho(floor);
        floor->queue.removeFirst();
    };
}

} // namespace

void addExchanges(Works *works)
{
    const Read reads[] = {{"1_register", AreaHoldingRegisters, 2},
                          {"10_registers", AreaHoldingRegisters, 20},
                          {"125_registers", AreaHoldingRegisters, 250},
                          {"2000_bits", AreaCoils, 250}};
    for (ImageMode mode : {Shared, PerStation}) {
        for (const Read &read : reads)
            addRead(works, read, mode);
        addWrite(works, "1_register", 1, mode);
        addWrite(works, "120_registers", 120, mode);
    }
    works->push_back({"exchange/write_bit_in_register/shared", prepareBitWrite});
    works->push_back({"floor/exchange/write_bit_in_register/shared", prepareBitWriteFloor});
}

} // namespace bench
