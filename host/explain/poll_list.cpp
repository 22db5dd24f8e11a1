// SPDX-License-Identifier: MIT
#include "poll_list.h"

std::set<int> unitsOf(const QList<Variable> &variables)
{
    std::set<int> units;
    for (const Variable &variable : variables)
        units.insert(variable.unit);
    return units;
}

/// With one unit all values share the driver's register image; with several they are kept per unit.
CommSettings pollSettings(const QList<Variable> &variables, int block)
{
    const std::set<int> units = unitsOf(variables);
    CommSettings settings;
    settings.writeBlockSize = block;
    settings.defaultStation = units.empty() ? 1 : *units.begin();
    settings.multiStation = units.size() > 1 ? 1 : 0;
    return settings;
}

int pollVariables(const DriverLibrary &driver, const QList<Variable> &variables)
{
    QList<VAR_ITEM> items;
    for (const Variable &variable : variables) {
        VAR_ITEM item;
        item.area = static_cast<quint8>(variable.area);
        item.station = static_cast<quint8>(variable.unit);
        item.addressText = variable.addressText();
        item.tagText = variable.name;
        item.count = variable.driverCount();
        items << item;
    }
    return driver.recreateReadList(&items);
}

bool queueReads(const DriverLibrary &driver, const CommSettings &settings, const QList<Variable> &variables)
{
    int queued = 0;
    for (int i = 0; i < variables.size(); ++i) {
        const Variable &variable = variables.at(i);
        RW_VAR read;
        read.hostId = panelHostId;
        read.hostItem = i;
        read.remoteMode = settings.remoteMode;
        read.linkId = settings.linkId;
        read.tagText = variable.name;
        read.area = variable.area;
        read.addressText = variable.addressText();
        read.station = variable.unit;
        read.dataLength = variable.driverCount();
        queued = driver.addOnceRead(&read, modbus_driver::QueueMerged);
    }
    return queued < modbus_driver::QueueLimit;
}
