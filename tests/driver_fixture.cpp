// SPDX-License-Identifier: MIT
#include "driver_fixture.h"

#include <new>

namespace {

Calls calls;

void writeDone(int channel, int id, int item, int outcome)
{
    calls.push_back(QString::fromLatin1("done %1 %2 %3 %4").arg(channel).arg(id).arg(item).arg(outcome).toStdString());
}

void itemNotify(QList<RW_VAR> *list, int id, int flag)
{
    EXPECT_TRUE(list->isEmpty());
    list->append(RW_VAR()); // the driver throws away what the host puts in
    calls.push_back(QString::fromLatin1("notify %1 %2").arg(id).arg(flag).toStdString());
}

} // namespace

Driver::Driver()
{
    PLC_driver.~Modbus_TCPIP_RTU_M();
    new (&PLC_driver) Modbus_TCPIP_RTU_M();
    settings.writeBlockSize = 10;
    settings.defaultStation = 1;
    settings.writeMode = 2;
    settings.linkId = 2;
    settings.hostChannel = 9;
    SetComInfo(&settings);
    RegistCallBackFuncIntf(writeDone, itemNotify);
    calls.clear();
}

int Driver::poll(const std::vector<Item> &items)
{
    QList<VAR_ITEM> list;
    for (const Item &item : items) {
        VAR_ITEM var;
        var.area = static_cast<quint8>(item.area);
        var.station = static_cast<quint8>(item.station);
        var.addressText = QString::fromLatin1(item.address);
        var.count = item.count;
        list.append(var);
    }
    return ReCreatReadVarList(&list);
}

int Driver::write(int area, const char *address, int count, const char *value, int hostId, int hostItem, int station)
{
    QByteArray data = bytes(value);
    return SetRegisterData(QString(), area, QString::fromLatin1(address), station, data, count, hostId, hostItem);
}

void Driver::expectRequest(const char *frame)
{
    const Protocol *request = ComCommunication();
    ASSERT_NE(request, nullptr) << "nothing to send instead of " << frame;
    EXPECT_EQ(hex(request->frame), hex(frame));
    EXPECT_EQ(request->frameLength, request->frame.size());
}

void Driver::exchange(const char *request, const char *replied, int status)
{
    expectRequest(request);
    EXPECT_EQ(*replied ? reply(replied) : noReply(), status);
}

int Driver::reply(const char *frame)
{
    QByteArray data = bytes(frame);
    return DataCom(&data, data.size())->status;
}

std::string Driver::value(int area, const char *address, int count, int station)
{
    QByteArray out;
    EXPECT_EQ(GetRegisterData(0, area, QString::fromLatin1(address), station, out, count), 1);
    return hex(out);
}

std::vector<std::string> Driver::takeCalls()
{
    Calls taken;
    taken.swap(calls);
    return taken;
}

RW_VAR access(int area, int start, int length, const char *data, int station)
{
    RW_VAR var;
    var.area = area;
    var.startAddress = start;
    var.dataLength = length;
    var.station = station;
    var.data = bytes(data);
    return var;
}

std::string listed(const QList<RW_VAR> &list)
{
    QStringList texts;
    for (const RW_VAR &var : list) {
        QString text = QString::fromLatin1("%1:%2*%3").arg(var.area).arg(var.startAddress).arg(var.dataLength);
        if (var.station != 1)
            text.prepend(QString::fromLatin1("%1/").arg(var.station));
        texts.append(text);
    }
    return texts.join(QLatin1Char(' ')).toStdString();
}

std::string origin(const RW_VAR &var)
{
    return QString::fromLatin1("%1 %2 %3 %4 %5 %6 %7 %8 %9")
        .arg(var.hostId)
        .arg(var.hostItem)
        .arg(var.rwFlag)
        .arg(var.remoteMode)
        .arg(var.linkId)
        .arg(var.subIndex)
        .arg(var.aux)
        .arg(var.tagText, var.addressText)
        .toStdString();
}
