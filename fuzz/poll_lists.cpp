// SPDX-License-Identifier: MIT
#include "script.h"
#include "targets.h"

#include "driver_checks.h"

#include <algorithm>
#include <vector>

using namespace modbus_driver;

namespace {

/// Of an item, as the station numbers its table; empty when this target has nothing to say about it.
struct Run
{
    int station, area;
    qint64 first, end;
};

/// What every list must ask for. Stations 0 and 255 may share a request with another area's; a table ends.
Run runOf(const VAR_ITEM &item, int station)
{
    const int address = StringAddressToInt(item.area, item.addressText);
    if (address < 0 || address > 60000 || item.count < 1 || item.area > 7 || station % 255 == 0)
        return {0, 0, 0, 0};
    if (item.area == 2 || item.area == 3)
        return {station, getPlcReg(item.area), address / 16, (qint64(address) + item.count + 15) / 16};
    return {station, getPlcReg(item.area), address, qint64(address) + item.count};
}

/// Looks through the requests once, however many they are: what asks for the run is sorted and followed.
void requireAsked(const QList<RW_VAR> &requests, const Run &run)
{
    std::vector<std::pair<qint64, qint64>> asking; // start and end
    for (const RW_VAR &request : requests) {
        const qint64 end = request.startAddress + qint64(request.dataLength) * (isBitArea(run.area) ? 8 : 1);
        if (request.station == run.station && request.area == run.area && request.startAddress < run.end && end > run.first)
            asking.emplace_back(request.startAddress, end);
    }
    std::sort(asking.begin(), asking.end());
    qint64 asked = run.first;
    for (const auto &request : asking) {
        if (request.first <= asked)
            asked = qMax(asked, request.second);
    }
    require(asked >= run.end, "every value of the list is asked for");
}

/// A request of bits may exceed the block by the byte that its start was rounded down into.
void requireWithinBlock(const QList<RW_VAR> &requests, int block)
{
    for (const RW_VAR &request : requests) {
        require(!isBitArea(request.area) || request.startAddress % 8 == 0 || request.area < 0,
                "bits are read from a byte's start");
        require(block < 1 || request.dataLength <= block + isBitArea(request.area), "no request exceeds the block");
    }
}

void askOnce(const VAR_ITEM &item, const Run &run)
{
    RW_VAR var;
    var.area = item.area;
    var.station = item.station;
    var.addressText = item.addressText;
    var.dataLength = item.count;
    PLC_driver.onceReadList.clear(); // host_calls.cpp fills queues; a long one only takes time here
    const int queued = AddListOnceReadVar(&var, QueueMerged);
    const bool refused = StringAddressToInt(item.area, item.addressText) < 0;
    require(queued == (refused ? 0 : PLC_driver.onceReadList.size()), "a one-shot read tells the queue's length");
    if (PLC_driver.onceReadList.size() < QueueLimit)
        requireAsked(PLC_driver.onceReadList, run);
}

} // namespace

void fuzzPollLists(const quint8 *bytes, std::size_t size)
{
    Script script(bytes, size);
    CommSettings settings;
    freshDriver(&settings);
    settings.multiStation = script.flag();
    settings.writeBlockSize = script.byte() % 140 - 2;
    settings.defaultStation = 1;
    QList<VAR_ITEM> items;
    while (!script.atEnd() && items.size() < 16) {
        VAR_ITEM item;
        item.area = static_cast<quint8>(script.byte() % 9);
        item.station = static_cast<quint8>(script.number());
        item.addressText = script.addressText();
        item.count = qBound(0, script.number(), 200); // one below 0 may narrow its neighbours' request
        items.append(item);
    }
    require(ReCreatReadVarList(&items) == PLC_driver.readList.size(), "a rebuild tells the list's length");
    requireWithinBlock(PLC_driver.readList, settings.writeBlockSize);
    for (const VAR_ITEM &item : items) {
        const Run run = runOf(item, settings.multiStation ? item.station : settings.defaultStation);
        requireAsked(PLC_driver.readList, run);
        askOnce(item, run);
    }
    requireNothing(violatedInvariant());
}
