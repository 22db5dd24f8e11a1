// SPDX-License-Identifier: MIT
// What must not grow faster than the work: the rebuild of a poll list, the look-up of a station's record.
#include "floors.h"
#include "fresh_driver.h"
#include "poll_items.h"
#include "work.h"

#include <QtCore/QMutexLocker>

#include <algorithm>

using namespace modbus_driver;

namespace bench {

namespace {

Step prepareRebuild(int count, int stations)
{
    freshDriver(stations > 1 ? PerStation : Shared);
    QList<VAR_ITEM> items = pollItems(count, stations);
    return [=]() mutable { require(ReCreatReadVarList(&items) > 0, "no variable is polled"); };
}

/// A variable as one number to sort by, and where it stands in the list.
struct Place
{
    quint64 key;
    int index;
};

bool operator<(const Place &a, const Place &b)
{
    return a.key < b.key;
}

std::vector<Place> sortedPlaces(const QList<VAR_ITEM> &items)
{
    std::vector<Place> places;
    places.reserve(static_cast<std::size_t>(items.size()));
    for (int i = 0; i < items.size(); ++i) {
        const VAR_ITEM &item = items.at(i);
        const int address = item.addressText.leftRef(item.addressText.indexOf(QLatin1Char('.'))).toInt();
        const int table = item.station * 8 + getPlcReg(item.area);
        places.push_back({quint64(table) << 32 | quint64(address), i});
    }
    std::sort(places.begin(), places.end());
    return places;
}

/// Converts, sorts and makes one record for each run of a block; joins nothing beyond that.
Step prepareRebuildFloor(int count, int stations)
{
    FloorState *floor = &freshFloor();
    const QList<VAR_ITEM> items = pollItems(count, stations);
    return [=] {
        const std::vector<Place> places = sortedPlaces(items);
        QMutexLocker lock(&floor->listMutex);
        floor->queue.clear();
        quint64 end = 0;
        for (const Place &place : places) {
            if (place.key < end)
                continue;
            const quint64 block = items.at(place.index).area == AreaCoils ? 1000 : 125;
            end = place.key + block;
            RW_VAR record;
            record.addressText = items.at(place.index).addressText;
            record.startAddress = static_cast<int>(place.key & 0xFFFF);
            floor->queue.append(record);
        }
    };
}

void addRebuild(Works *works, int count, int stations)
{
    const std::string name = "rebuild/" + std::to_string(count) + "_variables/" +
                             (stations > 1 ? std::to_string(stations) + "_stations" : "1_station");
    works->push_back({name, [=] { return prepareRebuild(count, stations); }, count});
    works->push_back({"floor/" + name, [=] { return prepareRebuildFloor(count, stations); }, count});
}

/// Addresses in an order without a pattern, so that no look-up is next to the one before.
int scattered(quint32 *random, int count)
{
    *random = *random * 1664525u + 1013904223u;
    return static_cast<int>(quint64(*random) * quint64(count) >> 32);
}

/// The same number, of which the compiler knows nothing.
quint32 opaque(quint32 number)
{
    asm volatile("" : "+r"(number));
    return number;
}

/// 0, which the processor has only when the record is there: the next look-up waits for this one, as a panel
/// does.
quint32 waitFor(const EXTENDVAR &record, int address)
{
    const quint32 difference = opaque(static_cast<quint32>(record.address - address));
    require(opaque(difference) == 0, "a record was not found");
    return difference;
}

void keepRecords(int count)
{
    freshDriver(PerStation);
    for (int i = 0; i < count; ++i)
        ExtendFindSameVar(1, AreaHoldingRegisters, i);
}

Step prepareLookUp(int count)
{
    keepRecords(count);
    quint32 random = 1;
    return [=]() mutable {
        const int address = scattered(&random, count);
        const int position = ExtendFindSameVar(1, AreaHoldingRegisters, address);
        random += waitFor(PLC_driver.extendList.at(position), address);
    };
}

/// Reads the record where it is known to lie: what is left when the search itself costs nothing.
Step prepareLookUpFloor(int count)
{
    keepRecords(count);
    quint32 random = 1;
    return [=]() mutable {
        const int address = scattered(&random, count);
        random += waitFor(PLC_driver.extendList.at(address), address);
    };
}

} // namespace

void addRebuilds(Works *works)
{
    for (int stations : {1, 32}) {
        for (int count : {100, 1000, 10000, 100000})
            addRebuild(works, count, stations);
    }
}

void addLookUps(Works *works)
{
    for (int count : {100, 1000, 10000, 100000}) {
        const std::string name = "look_up/" + std::to_string(count) + "_records";
        works->push_back({name, [=] { return prepareLookUp(count); }, count});
        works->push_back({"floor/" + name, [=] { return prepareLookUpFloor(count); }, count});
    }
}

} // namespace bench
