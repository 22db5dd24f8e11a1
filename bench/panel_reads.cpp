// SPDX-License-Identifier: MIT
// What a screen does all the time: GetRegisterData, into an array that it keeps.
#include "floors.h"
#include "fresh_driver.h"
#include "work.h"

using namespace modbus_driver;

namespace bench {

namespace {

const int start = 1000;

enum Kind { Registers, Bits, Pairs };

struct PanelRead
{
    Kind kind;
    int values;
    ImageMode mode;
};

int areaOf(Kind kind)
{
    return kind == Bits ? AreaCoils : kind == Pairs ? AreaHoldingPairs : AreaHoldingRegisters;
}

Step prepare(const PanelRead &read)
{
    freshDriver(read.mode);
    const int area = areaOf(read.kind);
    const QString address = QString::number(start);
    const int count = read.kind == Pairs ? 2 * read.values : read.values;
    QByteArray out;
    return [=]() mutable {
        GetRegisterData(0, area, address, 1, out, count);
        keep(out.constData());
    };
}

typedef void (*Floor)(FloorState *, QString, QByteArray *, int);

Floor floorOf(const PanelRead &read)
{
    const Floor shared[] = {readRegisters, readBits, readPairs};
    const Floor perStation[] = {readRecordRegisters, readRecordBits, readRecordPairs};
    return (read.mode == Shared ? shared : perStation)[read.kind];
}

Step prepareFloor(const PanelRead &read)
{
    FloorState *floor = &freshFloor();
    if (read.mode == PerStation && read.kind == Bits)
        addRecords(floor, AreaCoils, start, read.values / 8 + 1, 8, 1);
    else if (read.mode == PerStation)
        addRecords(floor, AreaHoldingRegisters, start, 2 * read.values, 1, 2);
    const QString address = QString::number(start);
    const Floor body = floorOf(read);
    const int values = read.values;
    QByteArray out;
    return [=]() mutable {
        body(floor, address, &out, values);
        keep(out.constData());
    };
}

} // namespace

void addPanelReads(Works *works)
{
    const char *const kinds[] = {"register", "bit", "32_bit_value"};
    for (ImageMode mode : {Shared, PerStation}) {
        for (Kind kind : {Registers, Bits, Pairs}) {
            for (int values : {1, 16, 125}) {
                const PanelRead read = {kind, values, mode};
                const std::string name = "panel_read/" + std::to_string(values) + "_" + kinds[kind] +
                                         (values > 1 ? "s/" : "/") + nameOf(mode);
                works->push_back({name, [=] { return prepare(read); }});
                works->push_back({"floor/" + name, [=] { return prepareFloor(read); }});
            }
        }
    }
}

} // namespace bench
