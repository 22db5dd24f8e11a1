// SPDX-License-Identifier: MIT
// Whole exchanges: what is sent next, what a reply or its lack does, who is called back, and when.
#include "driver_fixture.h"

using namespace modbus_driver;

typedef DriverFixture Cycle;

namespace {

const char *const readRegister0 = "0000 0000 0006 01 03 0000 0001";
const char *const register0 = "0000 0000 0005 01 03 02 1234";
const char *const coil0On = "0000 0000 0006 01 05 0000 FF00"; // request and echo

} // namespace

TEST_F(Cycle, WritesThenOneShotReadsThenThePoll)
{
    const Rows<Text, bool, bool, std::string> rows = {
        {"all three", true, true, "555554444435544333"},
        {"a full burst goes idle once with nothing else to do", false, false, "55555-55-"},
    };
    for (const auto &[what, oneShots, polls, wanted] : rows) {
        restart(0);
        for (int i = 0; i < 7; ++i) {
            write(Coils, std::to_string(i), 1, "01");
            RW_VAR read = access(InputRegisters, i, 1);
            if (oneShots)
                AddListOnceReadVar(&read, QueueAsIs);
        }
        poll(polls ? "5:0*1" : "");
        std::string functions;
        while (functions.size() < wanted.size()) {
            const Protocol *request = ComCommunication();
            functions += request ? static_cast<char>('0' + request->frame.at(7)) : '-';
            QByteArray data(request ? request->replyLength : 0, '\0');
            DataCom(&data, data.size());
        }
        EXPECT_EQ(functions, wanted) << what;
    }
    PLC_driver.writeBurst = PLC_driver.onceBurst = 3;
    expectNothingToSend();
    EXPECT_EQ(PLC_driver.writeBurst + PLC_driver.onceBurst, 0);
    EXPECT_EQ(noReply(), StatusDone) << "a reply to nothing is harmless";
}

TEST_F(Cycle, SwitchedOffStationsArePassedOver)
{
    settings.multiStation = 1;
    for (int station = 1; station <= 3; ++station)
        write(Coils, "0", 1, "01", station, 0, station);
    EnCommStation(1, 0);
    exchange("0000 0000 0006 02 05 0000 FF00", "0000 0000 0006 02 05 0000 FF00", StatusDone, "notify(2 1) 1 3 done(9 2 0 1) 0 3");
    EnCommStation(3, 0);
    expectNothingToSend();
    EXPECT_EQ(listed(PLC_driver.writeList), "3/0:0*1 0:0*1") << "passed over, not dropped";
    EXPECT_EQ(settings.cycleDone, 1);
    PLC_driver.writeBurst = 4;
    poll("4/5:0*1");
    expectRequest("0000 0000 0006 04 03 0000 0001");
    EXPECT_EQ(PLC_driver.writeBurst, 0) << "the poll ends the burst";
}

TEST_F(Cycle, WriteThatBuildsNothingStaysAtTheHead)
{
    RW_VAR broadcastBit = access(RegisterBit, 5, 1, "01", StationBroadcast);
    AddListWriteVar(&broadcastBit, QueueMerged);
    poll("5:0*1");
    expectNothingToSend();
    expectNothingToSend();
    EXPECT_EQ(PLC_driver.writeBurst, 2) << "and still uses up its burst";
    EXPECT_EQ(takeCalls(), "notify(0 1) 0 1 notify(0 1) 0 1");
}

TEST_F(Cycle, GiveUpDropsTheGroup)
{
    for (int perStation : {0, 1}) {
        restart(perStation);
        for (int i = 0; i < 4; ++i) {
            RW_VAR var = by(i == 3 ? 8 : 7, access(Coils, i, 1, "01", i == 2 ? 2 : 1), AccessWrite);
            AddListWriteVar(&var, QueueAsIs);
        }
        exchange(coil0On, "", StatusLocalNoReply + 7, "notify(7 1) 1 4 done(9 7 0 2) 0 4 notify(7 1) 0 3");
        EXPECT_EQ(listed(QList<RW_VAR>() << PLC_driver.result) + hex(PLC_driver.result.data), "0:0*1");
        EXPECT_EQ(listed(PLC_driver.writeList), perStation ? "2/0:2*1 0:3*1" : "0:3*1");
    }
}

TEST_F(Cycle, PassIsCompleteAfterOneReplyMoreThanTheListHas)
{
    settings.writeBlockSize = settings.retryLimit = 1;
    poll("5:0*3");
    const Rows<Text, int, int, int> rows = {
        {register0, StatusDone, 1, 0},  {"", StatusRetry, 0, 0},
        {register0, StatusDone, 1, 0}, // a success does not start the count of failures afresh
        {"", StatusLocalNoReply, 0, 0}, {register0, StatusDone, 1, 0},
        {register0, StatusDone, 2, 0},  {register0, StatusDone, 3, 0},
        {register0, StatusDone, 0, 1},  {register0, StatusDone, 0, 1}, // counted only until the host has seen the pass
        {"", StatusRetry, 0, 0},
    };
    for (const auto &[replied, status, cyclicDone, cycleDone] : rows) {
        ASSERT_NE(ComCommunication(), nullptr);
        EXPECT_EQ(reply(replied), status);
        EXPECT_EQ(PLC_driver.cyclicDone, cyclicDone);
        EXPECT_EQ(settings.cycleDone, cycleDone);
    }
    EXPECT_EQ(listed(PLC_driver.readList), "5:2*1 5:0*1 5:1*1") << "polled round robin";
    EXPECT_EQ(settings.failCount, 1);
}

TEST_F(Cycle, RepliesAreJudgedByLengthThenByTheKindOfTheirRequest)
{
    const Rows<Text, int, int, int, int, int, int, Text, int, Text> rows = {
        {"a read", 0, -1, 0, 11, 11, 1, "1111", 1, "1111"},
        {"a second reply", 0, -1, 1, 11, 11, 1, "1111", 100, "1111"},
        {"not to be stored while remote", 0, 0, 0, 11, 11, 1, "1111", 100, "0000"},
        {"a write's echo", 1, 0, 0, 12, 12, 1, "0000", 100, "0000"},
        {"no reply", 0, -1, 0, 11, 0, 42, "0000", 142, "0000"},
        {"wrong length", 1, -1, 0, 12, 11, 72, "0000", 172, "0000"},
        {"any length", 0, -1, 0, -1, 40, 1, "1111", 1, "1111"},
        {"any length but nothing came", 0, -1, 0, -1, 0, 42, "0000", 142, "0000"},
        {"nothing expected", 1, 0, 0, 0, 0, 1, "0000", 100, "0000"},
        {"neither read nor write", 2, -1, 0, 12, 12, 12, "0000", 112, "0000"},
    };
    for (const auto &[what, rwFlag, subIndex, replies, expected, length, local, stored, remote, storedRemote] : rows) {
        for (bool isRemote : {false, true}) {
            Protocol request;
            request.replyLength = expected;
            request.replyDataLength = 2;
            request.var = by(1, access(Registers, 0, 1), rwFlag);
            request.var.subIndex = subIndex;
            PLC_driver.pendingList = QList<Protocol>() << request;
            PLC_driver.holdingRegisters[0] = 0;
            settings.repliesReceived = replies;
            QByteArray data(length, '\x11');
            EXPECT_EQ((isRemote ? DealDataOfRemoteArea : DealDataOfLocalArea)(&data, length), isRemote ? remote : local) << what;
            EXPECT_EQ(value(Registers, "0", 1), isRemote ? storedRemote : stored) << what;
        }
    }
}

TEST_F(Cycle, OneShotReadsOfAnotherLinkAreNeverReportedAsDone)
{
    const Rows<int, Text, int, Text> rows = {
        {2, register0, StatusDone, "done(9 3 0 1) 0 1"},
        {6, register0, StatusRemoteAccepted, ""},
        {6, "", StatusRemoteNoReply + 3, "notify(3 1) 0 0"},
    };
    for (const auto &[link, replied, status, calls] : rows) {
        RW_VAR read = by(3, access(Registers, 0, 1), AccessRead, link);
        AddListOnceReadVar(&read, QueueAsIs);
        exchange(readRegister0, replied, status, calls);
        EXPECT_EQ(PLC_driver.currentKind, 2);
        EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    }
}

TEST_F(Cycle, RequestsGoOutRemoteWhileTheSettingSaysSo)
{
    poll("0:0*8");
    write(Registers, "100", 1, "3412", 5);
    settings.remoteMode = 1;
    exchange("18 05 01 02 01 0005 00000064 0001 00000000 00000000 3412 D1", "00 00 00 00 00 00 00 00 00 00 00 00", StatusDone,
             "done(9 5 0 1) 0 1");
    EXPECT_EQ(value(Registers, "100", 1), "3412") << "known at once";
    exchange("16 00 00 02 01 0000 00000000 0001 00000000 00000000 1A", "00 00 00 00 00 00 00 00 00 81", StatusDone);
    EXPECT_EQ(value(Coils, "0", 8), "0100000000000001");
    EXPECT_EQ(PLC_driver.cyclicDone, 0) << "remote replies complete no pass";
    settings.remoteMode = 0;
    expectRequest("0000 0000 0006 01 01 0000 0008");
    reply("0000 0000 0004 01 01 01 00");
    settings.remoteMode = 1;
    poll("5:0*1");
    expectNothingToSend();
    EXPECT_EQ(settings.cycleDone, 0) << "not idle: an entry was offered";
}

TEST_F(Cycle, RepliesShorterThanTheyClaimStayInsideTheirBytes)
{
    poll("5:0*2");
    QByteArray cut = bytes("0000 0000 0005 01 03 04 1234");
    for (QByteArray *received : {&cut, static_cast<QByteArray *>(nullptr)}) {
        ComCommunication();
        EXPECT_EQ(DataCom(received, 13)->status, StatusDone) << "only the length that the host claims is judged";
        EXPECT_EQ(value(Registers, "0", 2), "34120000");
    }
}
