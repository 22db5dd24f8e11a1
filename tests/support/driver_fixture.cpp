// SPDX-License-Identifier: MIT
#include "driver_fixture.h"

#include <QtCore/QRegExp>
#include <QtCore/QStringList>

#include <new>

namespace {

std::string calls;

/// Hosts rely on it that the driver holds listMutex during a call-back.
void record(const testing::Message &call)
{
    EXPECT_TRUE(isHeld(&PLC_driver.listMutex)) << call;
    const int queued = PLC_driver.writeList.size() + PLC_driver.onceReadList.size();
    const testing::Message numbers = testing::Message() << ") " << PLC_driver.pendingList.size() << ' ' << queued;
    calls += (calls.empty() ? "" : " ") + call.GetString() + numbers.GetString();
}

void writeDone(int channel, int id, int item, int outcome)
{
    record(testing::Message() << "done(" << channel << ' ' << id << ' ' << item << ' ' << outcome);
}

void itemNotify(QList<RW_VAR> *list, int id, int flag)
{
    EXPECT_TRUE(list->isEmpty());
    list->append(RW_VAR()); // the driver must discard what the host adds
    record(testing::Message() << "notify(" << id << ' ' << flag);
}

} // namespace

bool isHeld(QMutex *lock)
{
    const bool isFree = lock->tryLock();
    if (isFree)
        lock->unlock();
    return !isFree;
}

QByteArray driverNumbers()
{
    const char *from = reinterpret_cast<const char *>(&PLC_driver.currentKind);
    return QByteArray(from, int(reinterpret_cast<const char *>(&PLC_driver + 1) - from));
}

void reloadDriver(CommSettings *settings, int multiStation)
{
    PLC_driver.~Modbus_TCPIP_RTU_M();
    new (&PLC_driver) Modbus_TCPIP_RTU_M();
    *settings = CommSettings();
    settings->multiStation = multiStation;
    settings->writeBlockSize = 10;
    settings->defaultStation = 1;
    settings->writeMode = modbus_driver::WriteModeToStation;
    settings->linkId = 2;
    settings->hostChannel = 9;
    SetComInfo(settings);
    RegistCallBackFuncIntf(writeDone, itemNotify);
    calls.clear();
}

int poll(const std::string &items)
{
    QList<VAR_ITEM> list;
    QRegExp pattern(QString::fromLatin1("(?:(\\d+)/)?(\\d):([^*]+)\\*(\\d+)"));
    const QString text = QString::fromStdString(items);
    for (int at = 0; (at = pattern.indexIn(text, at)) >= 0; at += pattern.matchedLength()) {
        VAR_ITEM item;
        item.station = pattern.cap(1).isEmpty() ? 1 : static_cast<quint8>(pattern.cap(1).toInt());
        item.area = static_cast<quint8>(pattern.cap(2).toInt());
        item.addressText = pattern.cap(3);
        item.tagText = QString::fromLatin1("tag");
        item.count = pattern.cap(4).toInt();
        list << item;
    }
    return ReCreatReadVarList(&list);
}

int write(int area, const std::string &address, int count, const std::string &value, int hostId, int hostItem, int station)
{
    QByteArray data = bytes(value.c_str());
    return SetRegisterData(QString(), area, QString::fromStdString(address), station, data, count, hostId, hostItem);
}

void expectRequest(const char *frame)
{
    const Protocol *request = ComCommunication();
    ASSERT_NE(request, nullptr) << "nothing to send instead of " << frame;
    EXPECT_EQ(hex(request->frame), hex(frame));
    EXPECT_EQ(request->frameLength, request->frame.size());
}

void exchange(const char *request, const char *replied, int status, const char *wanted)
{
    expectRequest(request);
    EXPECT_EQ(reply(replied), status);
    EXPECT_EQ(takeCalls(), wanted);
}

int reply(const char *frame)
{
    QByteArray data = bytes(frame);
    return DataCom(&data, data.size())->status;
}

std::string value(int area, const std::string &address, int count, int station)
{
    QByteArray out;
    EXPECT_EQ(GetRegisterData(0, area, QString::fromStdString(address), station, out, count), 1);
    return hex(out);
}

std::string takeCalls()
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
