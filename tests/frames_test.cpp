// SPDX-License-Identifier: MIT
// The bytes of every request and of every remote frame, and the reply that each expects.
#include "driver_fixture.h"

typedef DriverFixture Frames;

namespace {

/// "rwFlag/subIndex reply=header+data" of each request that is built.
std::string replies()
{
    testing::Message text;
    for (const Protocol &built : PLC_driver.pendingList)
        text << ' ' << built.var.rwFlag << '/' << built.var.subIndex << ' ' << built.replyLength << '=' << built.replyHeaderLength
             << '+' << built.replyDataLength;
    return text.GetString();
}

} // namespace

TEST_F(Frames, FramesByteForByte)
{
    typedef void (*Builder)(RW_VAR *);
    const char *const echo = " 0/0 12=0+0", *const none = " 0/0 0=0+0", *const nothing = "";
    const Rows<Text, Builder, RW_VAR, Text, Text> rows = {
        {"coils", &ReadRegister, access(Coils, 4660, 2), "0000 0000 0006 01 01 1234 0010", " 0/0 11=9+2"},
        {"discrete inputs", &ReadRegister, access(Inputs, 8, 32), "0000 0000 0006 01 02 0008 0100", " 0/0 41=9+32"},
        {"input registers", &ReadRegister, access(InputRegisters, 7, 3), "0000 0000 0006 01 04 0007 0003", " 0/0 15=9+6"},
        {"holding registers", &ReadRegister, access(Registers, 100, 10, "", 3), "0000 0000 0006 03 03 0064 000A", " 0/0 29=9+20"},
        {"broadcast read", &ReadRegister, access(InputRegisters, 0, 1, "", 0), "0000 0000 0006 00 04 0000 0001", none},
        {"low bits only", &ReadRegister, access(Coils, 65536 + 8, 8192, "", 258), "0000 0000 0006 02 01 0008 0000",
         " 0/0 8201=9+8192"},
        {"a derived area", &ReadRegister, access(RegisterBit, 0, 1), "", nothing},
        {"registers as bits", &ReadBool, access(Registers, 0, 1), "", nothing},
        {"bits as registers", &ReadAnalog, access(Inputs, 0, 1), "", nothing},
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
        {"one register, no byte", &WriteAnalog, access(Registers, 16, 1), "0000 0000 0006 01 06 0010 0000", echo},
        {"a bit, read and written back", &WriteBool_WordOfBit, by(0, access(RegisterBit, 35, 1, "01"), 7),
         "0000 0000 0006 01 03 0002 0001 0000 0000 0006 01 06 0002 3030", " 0/-1 11=9+2 1/0 12=0+0"},
        {"a bit of every station cannot be read", &WriteBool_WordOfBit, access(RegisterBit, 35, 1, "01", 0), "", nothing},
        {"remote read", &Remote_ReadVar, by(0, access(Coils, 16, 2)), "16 00 00 02 01 0000 00000010 0002 00000000 00000000 2B",
         " 0/0 11=9+2"},
        {"remote write", &Remote_WriteVar, by(5, access(Registers, 100, 1, "3412"), 1),
         "18 05 01 02 01 0005 00000064 0001 00000000 00000000 3412 D1", " 1/0 12=0+0"},
        {"remote, low bits", &Remote_ReadVar, by(300, access(Inputs, -1, 65537)),
         "16 2C 00 02 01 0001 FFFFFFFF 0001 00000000 00000000 43", " 0/0 65546=9+65537"},
        {"remote broadcast", &Remote_ReadVar, by(0, access(Coils, 0, 1, "", 0)),
         "16 00 00 02 00 0000 00000000 0001 00000000 00000000 19", none},
        {"remote registers", &Remote_ReadVar, by(0, access(Registers, 0, 1)), "", nothing},
    };
    for (const auto &[what, builder, from, frames, expected] : rows) {
        SCOPED_TRACE(what);
        PLC_driver.pendingList.clear();
        settings.repliesExpected = settings.repliesReceived = 77;
        RW_VAR var = from;
        builder(&var);
        const int built = PLC_driver.pendingList.size();
        EXPECT_EQ(settings.repliesExpected, built ? built : 77);
        EXPECT_EQ(settings.repliesReceived, built ? 0 : 77);
        EXPECT_EQ(replies(), expected);
        QByteArray sent;
        for (const Protocol &request : PLC_driver.pendingList) {
            sent += request.frame;
            EXPECT_EQ(request.frameLength, request.frame.size());
            EXPECT_EQ(request.var.data, var.data);
        }
        EXPECT_EQ(hex(sent), hex(frames));
    }
}

TEST_F(Frames, LongRemoteFrameIsSummedToItsEnd)
{
    RW_VAR var = access(Registers, 0, 1);
    var.data = QByteArray(66000, '\x01') + QByteArray(10, '\x02');
    Remote_WriteVar(&var);
    EXPECT_EQ(hex(PLC_driver.pendingList.at(0).frame.right(1)), hex("DB"));
}
