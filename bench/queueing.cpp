// SPDX-License-Identifier: MIT
// A panel's write and its one-shot read while others are queued already. Each step takes its entry off again.
#include "floors.h"
#include "fresh_driver.h"
#include "work.h"

using namespace modbus_driver;

namespace bench {

namespace {

const int bitsWritten = 1000;

QList<RW_VAR> entries(int count)
{
    QList<RW_VAR> list;
    for (int i = 0; i < count; ++i)
        list.append(readOf(AreaHoldingRegisters, 100 + i, 1));
    return list;
}

Step prepareWrite(int queued)
{
    freshDriver(Shared);
    PLC_driver.writeList = entries(queued);
    const QString address = QStringLiteral("5000");
    QByteArray value(2, 'v');
    return [=]() mutable {
        const int now = SetRegisterData(QString(), AreaHoldingRegisters, address, 1, value, 1, 5, 6);
        require(now == queued + 1, "the write was not queued");
        PLC_driver.writeList.removeLast();
    };
}

/// A write of bits is queued bit by bit, and each looks through those that are queued already.
Step prepareBits()
{
    freshDriver(Shared);
    const QString address = QStringLiteral("5000");
    QByteArray value(bitsWritten, '\1');
    return [=]() mutable {
        SetRegisterData(QString(), AreaCoils, address, 1, value, bitsWritten, 5, 6);
        require(PLC_driver.writeList.size() == bitsWritten, "not every bit was queued");
        PLC_driver.writeList = QList<RW_VAR>();
    };
}

Step prepareBitsFloor()
{
    FloorState *floor = &freshFloor();
    const QString address = QStringLiteral("5000");
    const QByteArray value(1, '\1');
    return [=] {
        for (int i = 0; i < bitsWritten; ++i)
            queue(floor, address, value);
        floor->queue = QList<RW_VAR>();
    };
}

Step prepareOnceRead(int queued)
{
    freshDriver(Shared);
    PLC_driver.onceReadList = entries(queued);
    const RW_VAR read = readOf(AreaHoldingRegisters, 5000, 1);
    return [=] {
        RW_VAR var = read;
        require(AddListOnceReadVar(&var, 0) == queued + 1, "the one-shot read was not queued");
        PLC_driver.onceReadList.removeLast();
    };
}

Step prepareFloor(int queued, int bytes)
{
    FloorState *floor = &freshFloor();
    floor->queue = entries(queued);
    const QString address = QStringLiteral("5000");
    const QByteArray value(bytes, 'v');
    return [=] {
        queue(floor, address, value);
        floor->queue.removeLast();
    };
}

} // namespace

void addQueueing(Works *works)
{
    works->push_back({"panel_write/1000_bits", prepareBits, bitsWritten});
    works->push_back({"floor/panel_write/1000_bits", prepareBitsFloor, bitsWritten});
    for (int queued : {0, 512, 1023}) {
        const std::string behind = "_behind_" + std::to_string(queued);
        works->push_back({"panel_write/queued" + behind, [=] { return prepareWrite(queued); }});
        works->push_back({"floor/panel_write/queued" + behind, [=] { return prepareFloor(queued, 2); }});
        works->push_back({"panel_once_read/queued" + behind, [=] { return prepareOnceRead(queued); }});
        works->push_back({"floor/panel_once_read/queued" + behind, [=] { return prepareFloor(queued, 0); }});
    }
}

} // namespace bench
