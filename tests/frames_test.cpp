// SPDX-License-Identifier: MIT
// The bytes of every request and of every remote frame, and the reply that each expects.
#include "driver_fixture.h"

typedef DriverFixture Frames;

TEST_F(Frames, FramesByteForByte)
{
    typedef void (*Builder)(RW_VAR *);
    enum { echo = -1, none = 0 }; // else the data bytes of a read's reply, with nine ahead of them
    const Rows<Text, Builder, RW_VAR, Text, int> rows = {
        {"coils", &ReadRegister, access(Coils, 4660, 2), "0000 0000 0006 01 01 1234 0010", 2},
        {"discrete inputs", &ReadRegister, access(Inputs, 8, 32), "0000 0000 0006 01 02 0008 0100", 32},
        {"input registers", &ReadRegister, access(InputRegisters, 7, 3), "0000 0000 0006 01 04 0007 0003", 6},
        {"holding registers", &ReadRegister, access(Registers, 100, 10, "", 3), "0000 0000 0006 03 03 0064 000A", 20},
        {"broadcast read", &ReadRegister, access(InputRegisters, 0, 1, "", 0), "0000 0000 0006 00 04 0000 0001", none},
        {"low bits only", &ReadRegister, access(Coils, 65536 + 8, 8192, "", 258), "0000 0000 0006 02 01 0008 0000", 8192},
        {"a derived area", &ReadRegister, access(RegisterBit, 0, 1), nullptr, none},
        {"coil on", &WriteBool, access(Coils, 17, 1, "01"), "0000 0000 0006 01 05 0011 FF00", echo},
        {"coil, byte of 2", &WriteBool, access(Coils, 17, 1, "02"), "0000 0000 0006 01 05 0011 0000", echo},
        {"coil, no byte", &WriteBool, access(Coils, 17, 1), "0000 0000 0006 01 05 0011 0000", echo},
        {"broadcast coil", &WriteBool, access(Coils, 1, 1, "01", 0), "0000 0000 0006 00 05 0001 FF00", none},
        {"two registers", &WriteAnalog, access(Registers, 10, 2, "34127856"), "0000 0000 000B 01 10 000A 0002 04 1234 5678",
         echo},
        {"pairs, one too many", &WriteAnalog_10, access(Pairs, 0, 4, "78563412F0DEBC9A99999999"),
         "0000 0000 000F 01 10 0000 0004 08 1234 5678 9ABC DEF0", echo},
        {"half a pair", &WriteAnalog_10, access(Pairs, 0, 1, "7856"), "0000 0000 0007 01 10 0000 0001 02", echo},
        {"data too short", &WriteAnalog_10, access(Registers, 0, 3, "34127856"), "0000 0000 000B 01 10 0000 0003 06 1234 5678",
         echo},
        {"byte count wraps", &WriteAnalog_10, access(Registers, 0, 129), "0000 0000 0007 01 10 0000 0081 02", echo},
        {"broadcast", &WriteAnalog_10, access(Registers, 0, 1, "3412", 0), "0000 0000 0009 00 10 0000 0001 02 1234", none},
        {"one register", &WriteAnalog, access(Registers, 16, 1, "3412"), "0000 0000 0006 01 06 0010 1234", echo},
        {"one register, one byte", &WriteAnalog, access(Registers, 16, 1, "34"), "0000 0000 0006 01 06 0010 0034", echo},
        {"remote read", &Remote_ReadVar, by(0, access(Coils, 16, 2)), "16 00 00 02 01 0000 00000010 0002 00000000 00000000 2B",
         2},
        {"remote write", &Remote_WriteVar, by(5, access(Registers, 100, 1, "3412"), 1),
         "18 05 01 02 01 0005 00000064 0001 00000000 00000000 3412 D1", echo},
        {"remote, low bits", &Remote_ReadVar, by(300, access(Inputs, -1, 65537)),
         "16 2C 00 02 01 0001 FFFFFFFF 0001 00000000 00000000 43", 65537},
        {"remote broadcast", &Remote_ReadVar, by(0, access(Coils, 0, 1, "", 0)),
         "16 00 00 02 00 0000 00000000 0001 00000000 00000000 19", none},
        {"remote registers", &Remote_ReadVar, by(0, access(Registers, 0, 1)), nullptr, none},
    };
    for (const auto &[what, builder, from, frame, replied] : rows) {
        SCOPED_TRACE(what);
        PLC_driver.pendingList.clear();
        settings.repliesExpected = settings.repliesReceived = 77;
        RW_VAR var = from;
        builder(&var);
        EXPECT_EQ(settings.repliesExpected, frame ? 1 : 77);
        EXPECT_EQ(settings.repliesReceived, frame ? 0 : 77);
        ASSERT_EQ(PLC_driver.pendingList.size(), frame ? 1 : 0);
        for (const Protocol &built : PLC_driver.pendingList) {
            EXPECT_EQ(hex(built.frame), hex(frame));
            EXPECT_EQ(built.frameLength, built.frame.size());
            EXPECT_EQ(built.replyLength, replied == echo ? 12 : replied ? 9 + replied : 0);
            EXPECT_EQ(built.replyHeaderLength, replied > 0 ? 9 : 0);
            EXPECT_EQ(built.replyDataLength, qMax(0, replied));
            EXPECT_EQ(built.var.data, var.data);
        }
    }
}

TEST_F(Frames, BitOfRegisterIsReadThenWrittenBack)
{
    RW_VAR var = access(RegisterBit, 35, 1, "01"), broadcast = access(RegisterBit, 35, 1, "01", 0);
    var.rwFlag = var.subIndex = 7;
    WriteBool_WordOfBit(&var);
    WriteBool_WordOfBit(&broadcast); // which cannot be read
    const Rows<Text, int, Text, Text> rows = {
        {"0000 0000 0006 01 03 0002 0001", 11, "3:2*1", "0 0 0 0 0 -1 0  "},
        {"0000 0000 0006 01 06 0002 3030", 12, "3:35*1", "0 0 1 0 0 0 0  "},
    };
    for (const auto &[frame, length, place, from] : rows) {
        const Protocol built = PLC_driver.pendingList.takeFirst();
        EXPECT_EQ(hex(built.frame), hex(frame));
        EXPECT_EQ(built.replyLength, length);
        EXPECT_EQ(listed(QList<RW_VAR>() << built.var), place);
        EXPECT_EQ(origin(built.var), from);
    }
    EXPECT_EQ(settings.repliesExpected, 2);
}

TEST_F(Frames, EveryWriteIsNotifiedAndMirroredUnlessItMayNotBe)
{
    const Rows<Text, int, bool, Text, Text> rows = {
        {"registers", Registers, false, "notify(6 1) 1 0", "3412"},
        {"after a failure", Registers, true, "notify(6 1) 1 0", "5555"},
        {"a bit of a register", RegisterBit, false, "notify(6 1) 2 0", "5555"},
        {"read-only area", InputRegisters, false, "notify(6 1) 0 0", "5555"},
    };
    for (const auto &[what, area, failed, calls, register0] : rows) {
        PLC_driver.holdingRegisters[0] = 0x5555; // bit 0 is set, and byte 34 would clear it
        PLC_driver.pendingList.clear();
        PLC_driver.lastFailed = failed;
        RW_VAR var = access(area, 0, 1, "3412");
        var.hostId = 6;
        PLC_driver.listMutex.lock(); // as the cycle holds it
        WriteRegister(&var);
        PLC_driver.listMutex.unlock();
        EXPECT_EQ(takeCalls(), calls) << what;
        EXPECT_EQ(value(Registers, "0", 1), register0) << what;
    }
}

TEST_F(Frames, CallBacksThatAreNotRegisteredAreSkipped)
{
    RegistCallBackFuncIntf(nullptr, nullptr);
    write(Registers, "0", 1, "3412");
    exchange("0000 0000 0009 01 10 0000 0001 02 1234", "", 41);
}
