// SPDX-License-Identifier: MIT
#include "read_list.h"

#include "address_text.h"
#include "areas.h"
#include "grouping.h"
#include "pieces.h"

#include "../driver/arithmetic.h"
#include "../driver/driver_object.h"

#include <QtCore/QHash>
#include <QtCore/QMutexLocker>

using varlists::isBitArea;

namespace {

/// The records of one request area, or of one station and area: what may share a request.
typedef QList<RW_VAR> Group;

const int lastArea = AreaHoldingPairs;

bool isBitOfRegister(int area)
{
    return area == AreaInputRegisterBit || area == AreaHoldingRegisterBit;
}

/// What every request of a poll list has.
RW_VAR templateRecord(const CommSettings &settings)
{
    RW_VAR record;
    record.hostItem = -1;
    record.remoteMode = settings.remoteMode;
    record.linkId = settings.linkId;
    return record;
}

/// An item as a run on its request area: bits, or whole registers. No run is longer than a table.
void describeItem(const VAR_ITEM &item, int station, int address, RW_VAR *record)
{
    record->station = station;
    record->tagText = item.tagText;
    record->addressText = item.addressText;
    record->area = getPlcReg(item.area);
    record->startAddress = address;
    record->dataLength = item.count;
    if (isBitOfRegister(item.area)) {
        record->startAddress = address >> 4;
        record->dataLength =
            arithmetic::saturated(arithmetic::ceilDiv(qint64(address % 16) + item.count, 16));
    }
    const int table = isBitArea(item.area) ? int(image::bitCount) : int(image::registerCount);
    record->dataLength = qMin(record->dataLength, table);
}

/// The most registers, or bits, of one request.
int requestLimit(int area, int block)
{
    return isBitArea(area) ? arithmetic::saturated(qint64(block) * 8) : block;
}

/// One group for each request area, polled in this order.
QList<Group> groupByArea(const QList<VAR_ITEM> &items, const CommSettings &settings)
{
    Group coils, inputs, inputRegisters, holdingRegisters;
    RW_VAR record = templateRecord(settings);
    for (int i = 0; i < items.size(); ++i) {
        const VAR_ITEM &item = items.at(i);
        const int address = StringAddressToInt(item.area, item.addressText);
        if (address < 0 || item.area > lastArea)
            continue;
        describeItem(item, settings.defaultStation, address, &record);
        Group *group = record.area == AreaCoils            ? &coils
                       : record.area == AreaDiscreteInputs ? &inputs
                       : record.area == AreaInputRegisters ? &inputRegisters
                                                           : &holdingRegisters;
        WhetherGroup(record.dataLength, requestLimit(record.area, settings.writeBlockSize), &record, group);
    }
    return QList<Group>() << coils << inputs << inputRegisters << holdingRegisters;
}

/// Collects records by station and area, in the order in which the keys first appear.
class StationGroups
{
public:
    /// The newest record of a group stands first. 255, not 256: station 255 of one area and station 0 of
    /// the next share a key, and so a request.
    void file(const RW_VAR &record)
    {
        const int key = record.station + 255 * record.area;
        QHash<int, int>::const_iterator known = m_groupOfKey.constFind(key);
        if (known == m_groupOfKey.constEnd()) {
            known = m_groupOfKey.insert(key, m_groups.size());
            m_groups.append(Group());
        }
        m_groups[known.value()].prepend(record);
    }

    /// Cuts into pieces of one block, bits too: the merge joins neighbouring pieces again.
    void filePieces(RW_VAR record, int block)
    {
        const varlists::Pieces pieces = varlists::cut(record.dataLength, block);
        const qint64 base = record.startAddress;
        for (int k = 0; k < pieces.count; ++k) {
            record.startAddress = arithmetic::wrapped(base + pieces.offset(k));
            record.dataLength = pieces.length(k);
            file(record);
        }
    }

    const QList<Group> &groups() const { return m_groups; }

private:
    QHash<int, int> m_groupOfKey;
    QList<Group> m_groups;
};

QList<Group> groupByStation(const QList<VAR_ITEM> &items, const CommSettings &settings)
{
    StationGroups groups;
    RW_VAR record = templateRecord(settings);
    for (int i = 0; i < items.size(); ++i) {
        const VAR_ITEM &item = items.at(i);
        const int address = StringAddressToInt(item.area, item.addressText);
        if (address < 0)
            continue;
        describeItem(item, item.station, address, &record);
        if (isBitArea(record.area)) {
            record.startAddress = address & ~7;
            record.dataLength = arithmetic::saturated(qint64(record.dataLength) + address % 8);
        }
        groups.filePieces(record, settings.writeBlockSize);
    }
    return groups.groups();
}

QList<Group> sortedGroups(const QList<VAR_ITEM> &items, const CommSettings &settings)
{
    QList<Group> groups =
        settings.multiStation == 0 ? groupByArea(items, settings) : groupByStation(items, settings);
    for (int i = 0; i < groups.size(); ++i)
        Bubble_Sort(&groups[i]);
    return groups;
}

/// Appends the group's requests to readList. What the first record holds, bits or registers, counts for all.
int mergeGroup(Group *group, int block, int count)
{
    if (group->isEmpty())
        return count;
    const int area = group->at(0).area;
    const int limit = requestLimit(area, block);
    return isBitArea(area) ? BitVarReCreat(group, limit, count) : WordVarReCreat(group, limit, count);
}

} // namespace

// Whatever needs no lock is done before it is taken, so that panel threads wait only for the merge.
int ReCreatReadVarList(QList<VAR_ITEM> *items)
{
    QList<Group> groups;
    int block = 0;
    if (!items->isEmpty()) {
        block = PLC_driver.comInfo->writeBlockSize;
        groups = sortedGroups(*items, *PLC_driver.comInfo);
    }

    QList<RW_VAR> former; // outlives the lock, and is freed without it
    QMutexLocker lock(&PLC_driver.listMutex);
    qSwap(former, PLC_driver.readList);
    if (items->isEmpty())
        return 0;
    PLC_driver.cyclicDone = 0;
    PLC_driver.comInfo->cycleDone = 0;
    int count = 0;
    for (int i = 0; i < groups.size(); ++i)
        count = mergeGroup(&groups[i], block, count);
    return PLC_driver.readList.size();
}

int AddListReadVar(RW_VAR *var)
{
    PLC_driver.readList.append(*var);
    return PLC_driver.readList.size();
}
