// SPDX-License-Identifier: MIT
// A host for tests: every test starts with a driver as it is after loading, and a settings record of its own.
// Bytes are hexadecimal on both sides; blanks group them as the reader likes.

#pragma once

#include "modbus_tcpip_rtu_m.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
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

bool isHeld(QMutex *lock);
/// The numbers and image arrays of the driver object, as they lie in memory.
QByteArray driverNumbers();
/// The driver as it is after loading, with this record handed over and call-backs that takeCalls() tells of.
void reloadDriver(CommSettings *settings, int multiStation);

/// Rebuilds the poll list from items written as listed() writes requests, with any address text.
int poll(const std::string &items);
int write(int area, const std::string &address, int count, const std::string &value, int hostId = 0, int hostItem = 0,
          int station = 1);
void expectRequest(const char *frame);
inline void expectNothingToSend()
{
    EXPECT_EQ(ComCommunication(), nullptr);
}
/// The status that DataCom reports for these reply bytes; "" for none.
int reply(const char *frame);
/// A request, its reply, or "" for none, the status of the exchange, and the call-backs since the last look.
void exchange(const char *request, const char *replied, int status, const char *calls = "");
/// What GetRegisterData gives.
std::string value(int area, const std::string &address, int count, int station = 1);
/// The call-backs since the last look, with the numbers of pending requests and of queued writes and one-shot reads at
/// that moment: "done(CHANNEL ID ITEM OUTCOME) PENDING QUEUED notify(ID FLAG) PENDING QUEUED".
std::string takeCalls();

class DriverFixture : public testing::Test
{
protected:
    DriverFixture() { restart(0); }

    /// Everything as at the start of a test, with this CommSettings::multiStation.
    void restart(int multiStation) { reloadDriver(&settings, multiStation); }

    CommSettings settings;
};

/// This access, made by a host for the fixture's link.
inline RW_VAR by(int hostId, RW_VAR var, int rwFlag = 0, int linkId = 2)
{
    var.hostId = hostId;
    var.rwFlag = rwFlag;
    var.linkId = linkId;
    return var;
}
RW_VAR access(int area, int start, int length, const char *data = "", int station = 1);
/// "area:start*length" for each entry, with "station/" ahead when that is not 1.
std::string listed(const QList<RW_VAR> &list);
/// "hostId hostItem rwFlag remoteMode linkId subIndex aux tagText addressText"
std::string origin(const RW_VAR &var);
