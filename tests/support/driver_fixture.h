// SPDX-License-Identifier: MIT
// A host for tests: every test starts with a driver as it is after loading, and a settings record of its own.
// Bytes are hexadecimal on both sides; blanks group them as the reader likes.

#pragma once

#include "modbus_tcpip_rtu_m.h"

#include <QtCore/QRegExp>
#include <QtCore/QStringList>

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

// The areas, short enough for rows.
enum { Coils, Inputs, InputBit, RegisterBit, InputRegisters, Registers, InputPairs, Pairs, NoArea };

typedef const char *Text;

/// A table; its loop names the columns.
template <typename... Columns> using Rows = std::vector<std::tuple<Columns...>>;

inline QByteArray bytes(const char *hex)
{
    return QByteArray::fromHex(hex);
}

inline std::string hex(const QByteArray &data)
{
    return data.toHex().toUpper().constData();
}

/// The same digits as hex() gives, without the author's blanks.
inline std::string hex(const char *text)
{
    return hex(bytes(text));
}

/// An access by its place and value.
inline RW_VAR access(int area, int start, int length, const char *data = "", int station = 1)
{
    RW_VAR var;
    var.area = area;
    var.startAddress = start;
    var.dataLength = length;
    var.station = station;
    var.data = bytes(data);
    return var;
}

/// This access, made by a host for the fixture's link.
inline RW_VAR by(int hostId, RW_VAR var, int rwFlag = 0, int linkId = 2)
{
    var.hostId = hostId;
    var.rwFlag = rwFlag;
    var.linkId = linkId;
    return var;
}

/// "area:start*length", with "station/" ahead when that is not 1.
inline std::string listed(const RW_VAR &var)
{
    const std::string station = var.station == 1 ? "" : std::to_string(var.station) + '/', area = std::to_string(var.area);
    return station + area + ':' + std::to_string(var.startAddress) + '*' + std::to_string(var.dataLength);
}

inline std::string listed(const QList<RW_VAR> &list)
{
    std::string texts;
    for (const RW_VAR &var : list)
        texts += (texts.empty() ? "" : " ") + listed(var);
    return texts;
}

/// "hostId hostItem rwFlag remoteMode linkId subIndex aux tagText addressText"
inline std::string origin(const RW_VAR &var)
{
    testing::Message text;
    for (int number : {var.hostId, var.hostItem, var.rwFlag, var.remoteMode, var.linkId, var.subIndex, var.aux})
        text << number << ' ';
    return (text << qPrintable(var.tagText) << ' ' << qPrintable(var.addressText)).GetString();
}

inline bool isHeld(QMutex *lock)
{
    const bool isFree = lock->tryLock();
    if (isFree)
        lock->unlock();
    return !isFree;
}

/// The numbers and image arrays of the driver object, as they lie in memory.
inline QByteArray driverNumbers()
{
    const char *from = reinterpret_cast<const char *>(&PLC_driver.currentKind);
    return QByteArray(from, int(reinterpret_cast<const char *>(&PLC_driver + 1) - from));
}

inline std::string calls;

/// The call-backs since the last look, with the numbers of pending requests and of queued writes and one-shot reads at
/// that moment: "done(CHANNEL ID ITEM OUTCOME) PENDING QUEUED notify(ID FLAG) PENDING QUEUED".
inline std::string takeCalls()
{
    return std::exchange(calls, std::string());
}

/// Hosts rely on it that the driver holds listMutex during a call-back.
inline void record(const testing::Message &call)
{
    EXPECT_TRUE(isHeld(&PLC_driver.listMutex)) << call;
    const int queued = PLC_driver.writeList.size() + PLC_driver.onceReadList.size();
    const testing::Message numbers = testing::Message() << ") " << PLC_driver.pendingList.size() << ' ' << queued;
    calls += (calls.empty() ? "" : " ") + call.GetString() + numbers.GetString();
}

/// The driver as it is after loading, with this record handed over and call-backs that takeCalls() tells of.
inline void reloadDriver(CommSettings *settings, int multiStation)
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
    RegistCallBackFuncIntf(
        [](int channel, int id, int item, int outcome) {
            record(testing::Message() << "done(" << channel << ' ' << id << ' ' << item << ' ' << outcome);
        },
        [](QList<RW_VAR> *list, int id, int flag) {
            EXPECT_TRUE(list->isEmpty());
            list->append(RW_VAR()); // the driver must discard what the host adds
            record(testing::Message() << "notify(" << id << ' ' << flag);
        });
    calls.clear();
}

/// Rebuilds the poll list from items written as listed() writes requests, with any address text.
inline int poll(const std::string &items)
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

inline int write(int area, const std::string &address, int count, const std::string &value, int hostId = 0, int hostItem = 0,
                 int station = 1)
{
    QByteArray data = bytes(value.c_str());
    return SetRegisterData(QString(), area, QString::fromStdString(address), station, data, count, hostId, hostItem);
}

/// What GetRegisterData gives.
inline std::string value(int area, const std::string &address, int count, int station = 1)
{
    QByteArray out;
    EXPECT_EQ(GetRegisterData(0, area, QString::fromStdString(address), station, out, count), 1);
    return hex(out);
}

inline void expectNothingToSend()
{
    EXPECT_EQ(ComCommunication(), nullptr);
}

/// A request, its reply, or "" for none, the status of the exchange, and the call-backs since the last look.
inline void exchange(const char *frame, const char *replied, int status, const char *calledBack = "")
{
    const Protocol *request = ComCommunication();
    ASSERT_NE(request, nullptr) << "nothing to send instead of " << frame;
    EXPECT_EQ(hex(request->frame), hex(frame));
    QByteArray reply = bytes(replied);
    EXPECT_EQ(DataCom(&reply, reply.size())->status, status);
    EXPECT_EQ(takeCalls(), calledBack);
}

class DriverFixture : public testing::Test
{
protected:
    DriverFixture() { restart(0); }

    /// Everything as at the start of a test, with this CommSettings::multiStation.
    void restart(int multiStation) { reloadDriver(&settings, multiStation); }

    CommSettings settings;
};
