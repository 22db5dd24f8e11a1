// SPDX-License-Identifier: MIT
#include "../host/explain/frame_text.h"

#include "host_words.h"

#include <tuple>

namespace {

const FrameKind request = FrameKind::Request;
const FrameKind reply = FrameKind::Reply;
const FrameKind remote = FrameKind::Remote;

TEST(Frame, IsSummedUpInOneLineOrNamesItsOneFault)
{
    const std::tuple<const char *, FrameKind, const char *, const char *> rows[] = {
        {"read coils", request, "0000 0000 0006 01 01 0008 0010", "unit 1: read coils 8-23"},
        {"write coil on", request, "0000 0000 0006 01 05 0005 FF00", "unit 1: write coil 5: on"},
        {"write coils", request, "0000 0000 0009 01 0F 0002 000A 02 0502", "unit 1: write coils 2-11: 1 0 1 0 0 0 0 0 0 1"},
        {"write registers", request, "0000 0000 000B 00 10 000A 0002 04 1234 5678",
         "unit 0: write registers 10-11: 0x1234 0x5678"},
        {"echo of write registers", reply, "0000 0000 0006 01 10 000A 0002", "unit 1: write registers 10-11"},
        {"bits", reply, "0000 0000 0005 01 02 02 0501", "unit 1: read discrete inputs: 1 0 1 0 0 0 0 0 1 0 0 0 0 0 0 0"},
        {"many registers", reply, "0000 0000 0015 01 03 12 000100020003000400050006000700080009",
         "unit 1: read holding registers: 0x0001 0x0002 0x0003 0x0004 0x0005 0x0006 0x0007 0x0008 ..."},
        {"exception", reply, "0000 0000 0003 01 83 02", "unit 1: exception 2, illegal data address, to read holding registers"},
        {"remote read", remote, "16 00 00 02 01 0000 00000010 0002 00000000 00000000 2B",
         "station 1: remote read coil:16, 2 bytes of eight bits"},
        {"remote write", remote, "18 05 01 02 01 0005 00000064 0001 00000000 00000000 3412 D1",
         "station 1: remote write hr:100, 1 register"},
        {"other protocol", request, "0000 0001 0006 01 03 0000 0001", "protocol identifier 1"},
        {"length field", request, "0000 0000 0007 01 03 0000 0001", "length field says 7, but 6 bytes"},
        {"no register", request, "0000 0000 0006 01 03 0000 0000", "quantity 0, the protocol allows 1 to 125"},
        {"too many bits", request, "0000 0000 0006 01 02 0000 07D1", "quantity 2001, the protocol allows 1 to 2000"},
        {"beyond the table", request, "0000 0000 0006 01 03 FFFF 0002", "passes the last address"},
        {"coil half on", request, "0000 0000 0006 01 05 0005 FF01", "FF 00 for on"},
        {"byte count of write", request, "0000 0000 000B 01 10 000A 0003 04 1234 5678", "the quantity takes 6 bytes"},
        {"byte count of reply", reply, "0000 0000 0007 01 03 02 1234 5678", "byte count 2, but 4 data bytes"},
        {"odd byte count", reply, "0000 0000 0006 01 03 03 123456", "registers take two bytes each"},
        {"empty reply", reply, "0000 0000 0003 01 01 00", "carries nothing"},
        {"cut in the quantity", request, "0000 0000 0005 01 03 0000 00", "ends in \"quantity\", bytes missing: 1"},
        {"unused bytes", reply, "0000 0000 0004 01 83 02 00", "does not use: 1"},
        {"exception as request", request, "0000 0000 0003 01 83 02", "that of an exception reply"},
        {"remote checksum", remote, "16 00 00 02 01 0000 00000010 0002 00000000 00000000 2C",
         "checksum is 44, but the bytes before it sum up to 43"},
        {"remote length", remote, "17 00 00 02 01 0000 00000010 0002 00000000 00000000 2C", "says 23, but there are 22"},
        {"remote access", remote, "16 00 02 02 01 0000 00000010 0002 00000000 00000000 2D", "neither 0, a read"},
        {"remote read of registers", remote, "16 00 00 02 01 0005 00000010 0002 00000000 00000000 30", "only areas 0 and 1"},
    };
    for (const auto &[what, kind, hex, expected] : rows) {
        const FrameText text = frameText(bytes(hex), kind);
        const QString summary = text.summary(), fault = text.faults.value(0);
        EXPECT_TRUE(fault.isEmpty() ? summary == QLatin1String(expected) : fault.contains(QLatin1String(expected)))
            << what << ": " << qPrintable(summary);
        EXPECT_TRUE(summary.endsWith(fault) && text.faults.size() < 2) << what << ": " << qPrintable(summary);
    }
}

TEST(Frame, CutAnywhereOrFilledWithAnythingIsExplainedWithoutHarm)
{
    const QByteArray whole = bytes("0000 0000 000B 01 10 000A 0002 04 1234 5678 FFFFFFFFFFFFFF");
    for (const FrameKind kind : {request, reply, remote}) {
        for (int length = 0; length < whole.size(); ++length) {
            EXPECT_EQ(frameText(whole.left(length), kind).faults.isEmpty(), kind == request && length == 17) << length;
            EXPECT_FALSE(frameText(whole.left(length).leftJustified(260, '\xFF'), kind).fields.isEmpty());
        }
    }
}

TEST(Frame, FieldsStandWithOffsetsBytesAndMeaning)
{
    using Field = std::tuple<const char *, int, const char *>;
    const char registers[] = "0000 0000 0009 01 03 06 1234 FFFE 0000";
    const Field rows[] = {
        {registers, 2, "4-5 00 09 length 9 bytes follow"},
        {registers, 4, "7 03 function 3, read holding registers"},
        {registers, 7, "11-12 FF FE register +1 65534, signed -2"},
        {"0000 0000 0006 01 06 0064 0001", 5, "8-9 00 64 address 100 (40101 when counted from 1)"},
        {"0000 0000 0006 01 10 270E 0001", 5, "8-9 27 0E address 9998 (49999 when counted from 1)"},
        {"0000 0000 0006 01 05 0000 0000", 5, "8-9 00 00 address 0 (00001 when counted from 1)"},
    };
    for (const auto &[hex, index, line] : rows)
        EXPECT_EQ(frameText(bytes(hex), reply).fields.value(index).simplified().toStdString(), line);
    const auto input = frameText(bytes("0000 0000 0006 01 02 270F 0001"), request).fields.value(5);
    EXPECT_TRUE(input.contains(QLatin1String("9999 (110000 when"))) << qPrintable(input);
}

} // namespace
