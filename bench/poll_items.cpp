// SPDX-License-Identifier: MIT
#include "poll_items.h"

#include "api/codes.h"

using namespace modbus_driver;

namespace bench {

QList<VAR_ITEM> pollItems(int count, int stations)
{
    QList<VAR_ITEM> items;
    items.reserve(count);
    quint32 random = 1;
    for (int i = 0; i < count; ++i) {
        const quint8 areas[] = {AreaCoils, AreaHoldingRegisters, AreaHoldingRegisterBit, AreaHoldingPairs,
                                AreaInputRegisters};
        random = random * 1664525u + 1013904223u;
        VAR_ITEM item;
        item.area = areas[i % 5];
        item.station = static_cast<quint8>(1 + i % stations);
        const int address = static_cast<int>(random >> 16) % 60000;
        item.addressText = QString::number(address);
        if (item.area == AreaHoldingRegisterBit)
            item.addressText += QStringLiteral(".%1").arg(i % 16);
        item.count = item.area == AreaHoldingPairs ? 2 : 1;
        items.append(item);
    }
    return items;
}

} // namespace bench
