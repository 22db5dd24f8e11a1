// SPDX-License-Identifier: MIT
// Whole sequences: what is sent next, what a reply or its lack does, who is called back.
#include "driver_fixture.h"

#include <climits>

namespace {
const char *const readRegister0 = "0000 0000 0006 01 03 0000 0001";
const char *const register0 = "0000 0000 0005 01 03 02 1234";
} // namespace

TEST_F(Driver, NothingToDoIsIdle)
{
    PLC_driver.writeBurst = PLC_driver.onceBurst = 3;
    expectNothingToSend();
    EXPECT_EQ(settings.cycleDone, 1);
    EXPECT_EQ(PLC_driver.writeBurst, 0);
    EXPECT_EQ(PLC_driver.onceBurst, 0);
    EXPECT_EQ(noReply(), 1) << "a reply to nothing is harmless";
}

TEST_F(Driver, PolledRegisterReachesTheScreen)
{
    poll({{5, "0", 1}});
    expectRequest(readRegister0);
    exchange(readRegister0, register0, 1);
    EXPECT_EQ(value(5, "0", 1), "3412");
    EXPECT_EQ(PLC_driver.result.area, 5);
    EXPECT_TRUE(takeCalls().empty());
}

TEST_F(Driver, WritesThenOneShotReadsThenThePoll)
{
    poll({{5, "0", 1}});
    for (int i = 0; i < 7; ++i) {
        write(0, QByteArray::number(i).constData(), 1, "01");
        RW_VAR read = access(4, i, 1);
        read.linkId = settings.linkId;
        read.addressText = QString::number(i);
        AddListOnceReadVar(&read, 0);
    }
    std::string kinds;
    while (const Protocol *request = ComCommunication()) {
        kinds += static_cast<char>('0' + request->frame.at(7));
        QByteArray data(request->replyLength, '\0');
        ASSERT_EQ(DataCom(&data, data.size())->status, 1);
        if (kinds.size() == 18)
            break;
    }
    EXPECT_EQ(kinds, "555554444435544333");
}

TEST_F(Driver, FullBurstGoesIdleOnceWithNothingElseToDo)
{
    for (int i = 0; i < 7; ++i)
        write(0, QByteArray::number(i).constData(), 1, "01");
    for (int i = 0; i < 5; ++i) {
        ASSERT_NE(ComCommunication(), nullptr);
        reply("0000 0000 0006 01 05 0000 FF00");
    }
    expectNothingToSend();
    expectRequest("0000 0000 0006 01 05 0005 FF00");
}

TEST_F(Driver, SwitchedOffStationsArePassedOver)
{
    settings.multiStation = 1;
    for (int station = 1; station <= 3; ++station)
        write(0, "0", 1, "01", station, 0, station);
    EnCommStation(1, 0);
    expectRequest("0000 0000 0006 02 05 0000 FF00");
    EXPECT_EQ(listed(PLC_driver.writeList), "2/0:0*1 3/0:0*1 0:0*1");
    reply("0000 0000 0006 02 05 0000 FF00");
    EnCommStation(3, 0);
    expectNothingToSend();
    EXPECT_EQ(listed(PLC_driver.writeList), "3/0:0*1 0:0*1") << "passed over, not dropped";
    EXPECT_EQ(settings.cycleDone, 1);
    PLC_driver.writeBurst = 4;
    poll({{5, "0", 1, 4}});
    expectRequest("0000 0000 0006 04 03 0000 0001");
    EXPECT_EQ(PLC_driver.writeBurst, 0) << "the poll ends the burst";
}

TEST_F(Driver, WriteThatBuildsNothingStaysAtTheHead)
{
    RW_VAR broadcastBit = access(3, 5, 1, "01", 0);
    AddListWriteVar(&broadcastBit, 0);
    poll({{5, "0", 1}});
    expectNothingToSend();
    expectNothingToSend();
    EXPECT_EQ(PLC_driver.writeList.size(), 1);
    EXPECT_EQ(PLC_driver.writeBurst, 2) << "and still uses up its burst";
    EXPECT_EQ(takeCalls(), (Calls{"notify 0 1", "notify 0 1"}));
}

TEST_F(Driver, WriteIsNotifiedMirroredAndReported)
{
    write(5, "0", 1, "3412", 3, 4);
    expectRequest("0000 0000 0009 01 10 0000 0001 02 1234");
    EXPECT_EQ(takeCalls(), Calls{"notify 3 1"});
    EXPECT_EQ(value(5, "0", 1), "3412");
    EXPECT_EQ(reply("0000 0000 0006 01 10 0000 0001"), 1);
    EXPECT_EQ(takeCalls(), Calls{"done 9 3 4 1"});
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_EQ(PLC_driver.result.hostItem, 4);
    EXPECT_TRUE(PLC_driver.result.data.isEmpty());
}

TEST_F(Driver, GroupIsReportedWithItsLastWrite)
{
    write(0, "0", 2, "0101", 3, 4);
    ComCommunication();
    takeCalls();
    reply("0000 0000 0006 01 05 0000 FF00");
    EXPECT_TRUE(takeCalls().empty());
    exchange("0000 0000 0006 01 05 0001 FF00", "0000 0000 0006 01 05 0001 FF00", 1);
    EXPECT_EQ(takeCalls(), (Calls{"notify 3 1", "done 9 3 4 1"}));
}

TEST_F(Driver, BitOfRegisterInTwoExchanges)
{
    write(3, "2.3", 1, "01", 3, 4);
    exchange("0000 0000 0006 01 03 0002 0001", "0000 0000 0005 01 03 02 8001", 1);
    EXPECT_EQ(PLC_driver.writeList.size(), 1) << "the entry stays until the second reply";
    expectRequest("0000 0000 0006 01 06 0002 8009");
    EXPECT_EQ(value(5, "2", 1), "0180");
    EXPECT_EQ(reply("0000 0000 0006 01 06 0002 8009"), 1);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_EQ(takeCalls(), (Calls{"notify 3 1", "done 9 3 4 1"}));
}

TEST_F(Driver, GivingUpTheReadHalfDropsTheWriteBack)
{
    write(3, "2.3", 1, "01", 3, 4);
    exchange("0000 0000 0006 01 03 0002 0001", "0000 0000 0003 01 83 02", 74);
    EXPECT_TRUE(PLC_driver.pendingList.isEmpty());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_EQ(takeCalls(), (Calls{"notify 3 1", "done 9 3 4 2", "notify 3 1"}));
}

TEST_F(Driver, FailuresAreRetriedUpToTheLimit)
{
    settings.retryLimit = 2;
    poll({{5, "0", 2}});
    PLC_driver.cyclicDone = 1;
    settings.cycleDone = 1;
    for (int i = 1; i <= 2; ++i) {
        exchange("0000 0000 0006 01 03 0000 0002", "0000 0000 0003 01 83 02", 0);
        EXPECT_EQ(settings.failCount, i);
        EXPECT_TRUE(PLC_driver.lastFailed);
    }
    EXPECT_EQ(PLC_driver.cyclicDone, 0);
    EXPECT_EQ(settings.cycleDone, 0);
    exchange("0000 0000 0006 01 03 0000 0002", "0000 0000 0003 01 83 02", 71);
    EXPECT_EQ(settings.failCount, 0);
    EXPECT_EQ(listed(PLC_driver.readList), "5:0*2") << "polled again next time";
    EXPECT_EQ(takeCalls(), Calls{"notify 0 1"});
    for (int status : {0, 0, 41}) { // a success in between does not start the count afresh
        exchange("0000 0000 0006 01 03 0000 0002", "", status);
        if (settings.failCount == 1) {
            EXPECT_EQ(reply("0000 0000 0007 01 03 04 0000 0000"), 1);
            EXPECT_FALSE(PLC_driver.lastFailed);
        }
    }
}

TEST_F(Driver, GiveUpDropsTheGroup)
{
    const struct
    {
        const char *what;
        int multi;
        const char *left;
    } rows[] = {{"all stations", 0, "0:3*1"}, {"that station's only", 1, "2/0:2*1 0:3*1"}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        settings.multiStation = row.multi;
        PLC_driver.writeList.clear();
        for (int i = 0; i < 4; ++i) {
            RW_VAR var = access(0, i, 1, "01", i == 2 ? 2 : 1);
            var.hostId = i == 3 ? 8 : 7;
            var.rwFlag = 1;
            var.linkId = 2;
            AddListWriteVar(&var, 1);
        }
        ComCommunication();
        EXPECT_EQ(noReply(), 48);
        EXPECT_EQ(listed(PLC_driver.writeList), row.left);
        EXPECT_EQ(takeCalls(), (Calls{"notify 7 1", "done 9 7 0 2", "notify 7 1"}));
    }
}

TEST_F(Driver, PassIsCompleteAfterOneReplyMoreThanTheListHas)
{
    settings.writeBlockSize = 1;
    poll({{5, "0", 3}});
    for (int i = 1; i <= 4; ++i) {
        ASSERT_NE(ComCommunication(), nullptr);
        EXPECT_EQ(reply(register0), 1);
        EXPECT_EQ(settings.cycleDone, i == 4 ? 1 : 0) << i;
    }
    exchange("0000 0000 0006 01 03 0001 0001", register0, 1);
    EXPECT_EQ(PLC_driver.cyclicDone, 0) << "counted only until the host has seen the pass";
    EXPECT_EQ(listed(PLC_driver.readList), "5:2*1 5:0*1 5:1*1") << "polled round robin";
}

TEST_F(Driver, RepliesAreJudgedByLengthThenByTheKindOfTheirRequest)
{
    const struct
    {
        const char *what;
        int rwFlag, subIndex, replies, expected, length, local, remote;
    } rows[] = {
        {"a read", 0, -1, 0, 11, 11, 1, 1},
        {"a second reply", 0, -1, 1, 11, 11, 1, 100},
        {"not to be stored while remote", 0, 0, 0, 11, 11, 1, 100},
        {"a write's echo", 1, 0, 0, 12, 12, 1, 100},
        {"no reply", 0, -1, 0, 11, 0, 42, 142},
        {"wrong length", 1, -1, 0, 12, 11, 72, 172},
        {"any length", 0, -1, 0, -1, 40, 1, 1},
        {"any length but nothing came", 0, -1, 0, -1, 0, 42, 142},
        {"nothing expected", 1, 0, 0, 0, 0, 1, 100},
        {"neither read nor write", 2, -1, 0, 12, 12, 12, 112},
    };
    for (const auto &row : rows) {
        for (bool remote : {false, true}) {
            SCOPED_TRACE(testing::Message() << row.what << remote);
            Protocol request;
            request.replyLength = row.expected;
            request.replyDataLength = 2;
            request.var = access(5, 0, 1);
            request.var.rwFlag = row.rwFlag;
            request.var.subIndex = row.subIndex;
            request.var.hostId = 1;
            PLC_driver.pendingList = QList<Protocol>() << request;
            PLC_driver.holdingRegisters[0] = 0;
            settings.repliesReceived = row.replies;
            QByteArray data(row.length, '\x11');
            const int status = (remote ? DealDataOfRemoteArea : DealDataOfLocalArea)(&data, row.length);
            EXPECT_EQ(status, remote ? row.remote : row.local);
            const bool stored = remote ? row.subIndex == -1 && row.remote < 101 : row.rwFlag == 0 && row.local == 1;
            EXPECT_EQ(value(5, "0", 1), stored ? "1111" : "0000");
        }
    }
}

TEST_F(Driver, OneShotReadsOfAnotherLinkAreNeverReportedAsDone)
{
    RW_VAR read = access(5, 0, 1);
    read.hostId = 3;
    for (int link : {2, 6}) {
        read.linkId = link;
        AddListOnceReadVar(&read, 1);
        expectRequest(readRegister0);
        EXPECT_EQ(PLC_driver.currentKind, 2);
        EXPECT_EQ(reply(register0), link == 2 ? 1 : 100) << "judged as remote, and not the read half";
        EXPECT_EQ(takeCalls(), link == 2 ? Calls{"done 9 3 0 1"} : Calls{});
        EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    }
    AddListOnceReadVar(&read, 1);
    exchange(readRegister0, "", 144);
    EXPECT_EQ(takeCalls(), Calls{"notify 3 1"});
}

TEST_F(Driver, RequestsGoOutRemoteWhileTheSettingSaysSo)
{
    poll({{0, "0", 8}});
    write(5, "100", 1, "3412", 5);
    settings.remoteMode = 1;
    exchange("18 05 01 02 01 0005 00000064 0001 00000000 00000000 3412 D1", "00 00 00 00 00 00 00 00 00 00 00 00", 1);
    exchange("16 00 00 02 01 0000 00000000 0001 00000000 00000000 1A", "00 00 00 00 00 00 00 00 00 81", 1);
    EXPECT_EQ(value(0, "0", 8), "0100000000000001");
    EXPECT_EQ(PLC_driver.cyclicDone, 0) << "remote replies complete no pass";
    settings.remoteMode = 0;
    exchange("0000 0000 0006 01 01 0000 0008", "0000 0000 0004 01 01 01 00", 1);
    settings.remoteMode = 1;
    poll({{5, "0", 1}});
    expectNothingToSend();
    EXPECT_EQ(settings.cycleDone, 0) << "not idle: an entry was offered";
}

TEST_F(Driver, RepliesShorterThanTheyClaimStayInsideTheirBytes)
{
    poll({{5, "0", 2}});
    ComCommunication();
    QByteArray short1 = bytes("0000 0000 0005 01 03 04 1234");
    EXPECT_EQ(DataCom(&short1, 13)->status, 1) << "only the length that the host claims is judged";
    EXPECT_EQ(value(5, "0", 2), "34120000");
    ComCommunication();
    EXPECT_EQ(DataCom(nullptr, 13)->status, 1);
    EXPECT_EQ(value(5, "0", 2), "34120000");
}

// Stands last because it takes as long as all others together.
TEST_F(Driver, WriteOfAnyNumberOfBitsEndsWithAFullQueue)
{
    EXPECT_EQ(write(3, "0.0", INT_MAX, ""), 1024);
}
