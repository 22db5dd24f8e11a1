// SPDX-License-Identifier: MIT
#include "driver_fixture.h"

#include <QtCore/QStringList>

#include <new>

namespace {

std::string calls;

/// Hosts rely on it that the driver holds listMutex during a call-back.
void record(const std::string &call)
{
    if (PLC_driver.listMutex.tryLock()) {
        PLC_driver.listMutex.unlock();
        ADD_FAILURE() << call << " without listMutex";
    }
    const int queued = PLC_driver.writeList.size() + PLC_driver.onceReadList.size();
    calls += (testing::Message() << (calls.empty() ? "" : " ") << call << ") " << PLC_driver.pendingList.size() << ' ' << queued)
                 .GetString();
}

void writeDone(int channel, int id, int item, int outcome)
{
    record((testing::Message() << "done(" << channel << ' ' << id << ' ' << item << ' ' << outcome).GetString());
}

void itemNotify(QList<RW_VAR> *list, int id, int flag)
{
    EXPECT_TRUE(list->isEmpty());
    list->append(RW_VAR()); // the driver must discard what the host adds
    record((testing::Message() << "notify(" << id << ' ' << flag).GetString());
}

} // namespace

void reloadDriver(CommSettings *settings)
{
    PLC_driver.~Modbus_TCPIP_RTU_M();
    new (&PLC_driver) Modbus_TCPIP_RTU_M();
    SetComInfo(settings);
}

void DriverFixture::restart(int multiStation)
{
    settings = CommSettings();
    settings.multiStation = multiStation;
    settings.writeBlockSize = 10;
    settings.defaultStation = 1;
    settings.writeMode = modbus_driver::WriteModeToStation;
    settings.linkId = 2;
    settings.hostChannel = 9;
    reloadDriver(&settings);
    RegistCallBackFuncIntf(writeDone, itemNotify);
    calls.clear();
}

int DriverFixture::poll(const char *items)
{
    QList<VAR_ITEM> list;
    for (const QString &text : QString::fromLatin1(items).split(QLatin1Char(' '))) {
        const QChar slash = QLatin1Char('/'), colon = QLatin1Char(':'), times = QLatin1Char('*');
        VAR_ITEM item;
        item.station = static_cast<quint8>(text.contains(slash) ? text.section(slash, 0, 0).toInt() : 1);
        item.area = static_cast<quint8>(text.section(slash, -1).section(colon, 0, 0).toInt());
        item.addressText = text.section(colon, 1).section(times, 0, 0);
        item.count = text.section(times, 1).toInt();
        if (!text.isEmpty())
            list << item;
    }
    return ReCreatReadVarList(&list);
}

int DriverFixture::write(int area, const char *address, int count, const char *value, int hostId, int hostItem, int station)
{
    QByteArray data = bytes(value);
    return SetRegisterData(QString(), area, QString::fromLatin1(address), station, data, count, hostId, hostItem);
}

void DriverFixture::expectRequest(const char *frame)
{
    const Protocol *request = ComCommunication();
    ASSERT_NE(request, nullptr) << "nothing to send instead of " << frame;
    EXPECT_EQ(hex(request->frame), hex(frame));
    EXPECT_EQ(request->frameLength, request->frame.size());
}

void DriverFixture::exchange(const char *request, const char *replied, int status, const char *wanted)
{
    expectRequest(request);
    EXPECT_EQ(*replied ? reply(replied) : noReply(), status);
    EXPECT_EQ(takeCalls(), wanted);
}

int DriverFixture::reply(const char *frame)
{
    QByteArray data = bytes(frame);
    return DataCom(&data, data.size())->status;
}

std::string DriverFixture::value(int area, const char *address, int count, int station)
{
    QByteArray out;
    EXPECT_EQ(GetRegisterData(0, area, QString::fromLatin1(address), station, out, count), 1);
    return hex(out);
}

std::string DriverFixture::takeCalls()
{
    std::string taken;
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
        const QString station = var.station == 1 ? QString() : QString::fromLatin1("%1/").arg(var.station);
        texts << station + QString::fromLatin1("%1:%2*%3").arg(var.area).arg(var.startAddress).arg(var.dataLength);
    }
    return qPrintable(texts.join(QString::fromLatin1(" ")));
}

std::string origin(const RW_VAR &var)
{
    const int numbers[] = {var.hostId, var.hostItem, var.rwFlag, var.remoteMode, var.linkId, var.subIndex, var.aux};
    QString text;
    for (int number : numbers)
        text += QString::fromLatin1("%1 ").arg(number);
    return qPrintable(text + var.tagText + QLatin1Char(' ') + var.addressText);
}
