// SPDX-License-Identifier: MIT
// Exchanges at their edges: heads that build nothing, replies of any length, remote frames. What is sent next, retries,
// passes and call-backs are the business of sequences_test.cpp.
#include "driver_fixture.h"

using namespace modbus_driver;

typedef DriverFixture Cycle;

TEST_F(Cycle, WriteThatBuildsNothingStaysAtTheHead)
{
    expectNothingToSend();
    EXPECT_EQ(PLC_driver.currentKind, OriginNone) << "an empty queue was looked at";
    RW_VAR broadcastBit = access(RegisterBit, 5, 1, "01", StationBroadcast);
    AddListWriteVar(&broadcastBit, QueueMerged);
    poll("5:0*1");
    expectNothingToSend();
    expectNothingToSend();
    EXPECT_EQ(PLC_driver.writeBurst, 2) << "and still uses up its burst";
    EXPECT_EQ(takeCalls(), "notify(0 1) 0 1 notify(0 1) 0 1");
}

TEST_F(Cycle, CallBacksThatAreNotRegisteredAreSkipped)
{
    RegistCallBackFuncIntf(nullptr, nullptr);
    write(Registers, "0", 1, "3412");
    exchange("0000 0000 0009 01 10 0000 0001 02 1234", "", StatusLocalNoReply);
}

TEST_F(Cycle, RepliesAreJudgedByLengthThenByTheKindOfTheirRequest)
{
    const Rows<Text, int, int, int, int, int, int, Text, int, Text> rows = {
        {"a read", 0, -1, 0, 11, 11, 1, "1111", 1, "1111"},
        {"a second reply", 0, -1, 1, 11, 11, 1, "1111", 100, "1111"},
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
            EXPECT_EQ(CheckGetData(&data, length), (rwFlag + 1) % 3) << what;
            EXPECT_EQ((isRemote ? DealDataOfRemoteArea : DealDataOfLocalArea)(&data, length), isRemote ? remote : local) << what;
            EXPECT_EQ(value(Registers, "0", 1), isRemote ? storedRemote : stored) << what;
        }
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
    settings.remoteMode = 0;
    exchange("0000 0000 0006 01 01 0000 0008", "0000 0000 0004 01 01 01 00", StatusDone);
    settings.remoteMode = 1;
    poll("5:0*1");
    expectNothingToSend();
    EXPECT_EQ(settings.cycleDone, 0) << "not idle: an entry was offered";
}

TEST_F(Cycle, RepliesShorterThanTheyClaimStayInsideTheirBytes)
{
    PLC_driver.coilBits[0] = 1;
    poll("0:0*1 5:0*2");
    QByteArray cut = bytes("0000 0000 0005 01 03 04 1234");
    ComCommunication();
    EXPECT_EQ(DataCom(nullptr, 10)->status, StatusDone) << "only the length that the host claims is judged";
    ComCommunication();
    EXPECT_EQ(DataCom(&cut, 13)->status, StatusDone);
    EXPECT_EQ(value(Coils, "0", 1) + value(Registers, "0", 2), "0134120000");
}
