// SPDX-License-Identifier: MIT
#include "panel_calls.h"

#include "modbus_tcpip_rtu_m.h"

namespace panel {

namespace {

RW_VAR record(Script *script)
{
    RW_VAR var;
    var.hostId = script->byte() % 14;
    var.hostItem = script->byte() % 4;
    var.rwFlag = script->byte() % 3;
    var.linkId = script->byte() % 2;
    var.station = script->byte() % 4;
    var.area = script->byte() % 10 - 1;
    var.addressText = script->addressText();
    var.startAddress = script->number();
    var.dataLength = countOf(script);
    var.subIndex = -(script->byte() % 2);
    var.data = script->bytes(script->byte() % 16);
    return var;
}

} // namespace

/// Mostly small: many small calls reach more than one that queues sixty bits.
int countOf(Script *script)
{
    const int number = script->number();
    return number < 64 ? number : number < 240 ? number % 16 : 60;
}

void rebuild(Script *script)
{
    QList<VAR_ITEM> items;
    for (int n = script->byte() % 8; n > 0; --n) {
        VAR_ITEM item;
        item.area = static_cast<quint8>(script->byte() % 10);
        item.station = static_cast<quint8>(script->byte() % 4);
        item.addressText = script->addressText();
        item.count = countOf(script);
        items.append(item);
    }
    require(ReCreatReadVarList(&items) == PLC_driver.readList.size(), "a rebuild tells the list's length");
}

void read(Script *script)
{
    const int area = script->byte() % 10 - 1, station = script->byte() % 4, count = countOf(script);
    QByteArray out;
    GetRegisterData(0, area, script->addressText(), station, out, count);
    for (int i = 0; area >= 0 && area < 4 && i < out.size(); ++i)
        require(out.at(i) == 0 || out.at(i) == 1, "a bit is 0 or 1");
}

void write(Script *script)
{
    const int area = script->byte() % 10 - 1, station = script->byte() % 4, count = countOf(script);
    const int id = script->byte() % 14, item = script->byte() % 4;
    QByteArray value = script->bytes(script->byte() % 32);
    SetRegisterData(QString(), area, script->addressText(), station, value, count, id, item);
}

void switchStation(Script *script)
{
    const int station = script->byte() % 5 - 1;
    EnCommStation(station, script->byte() % 3);
}

int queue(Script *script)
{
    RW_VAR var = record(script);
    const int mode = script->byte() % 4 == 0;
    if (script->flag())
        AddListWriteVar(&var, mode);
    else
        AddListOnceReadVar(&var, mode);
    return mode;
}

} // namespace panel
