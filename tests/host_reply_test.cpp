// SPDX-License-Identifier: MIT
// Which bytes are a reply, and which replies may answer a request. Cuts of the stream are the fuzzer's.

#include "../host/link/reply_framing.h"
#include "host_words.h"

#include <tuple>

namespace {

TEST(ReplyFraming, Headers)
{
    using Row = std::tuple<const char *, const char *, ReplyFraming::Result, ReplyFault>;
    const Row rows[] = {
        {"length 1, too short for a PDU", "0000 0000 0001 01", ReplyFraming::BadHeader, ReplyFault::BadLength},
        {"length 2, a lone function code", "0000 0000 0002 01 83", ReplyFraming::Whole, ReplyFault::None},
        {"length 254, the longest", "0000 0000 00FE 01 03", ReplyFraming::Incomplete, ReplyFault::None},
        {"length 255, too long", "0000 0000 00FF", ReplyFraming::BadHeader, ReplyFault::BadLength},
        {"length 0x0103, by its high byte too", "0000 0000 0103", ReplyFraming::BadHeader, ReplyFault::BadLength},
        {"protocol 1, known before the length", "0000 0001", ReplyFraming::BadHeader, ReplyFault::OtherProtocol},
        {"any transaction", "BEEF 0000 0003 01 83 02", ReplyFraming::Whole, ReplyFault::None},
    };
    for (const auto &[what, hex, result, fault] : rows) {
        ReplyFraming framing;
        framing.append(bytes(hex));
        QByteArray reply;
        ReplyFault found = ReplyFault::None;
        EXPECT_EQ(framing.take(&reply, &found), result) << what;
        EXPECT_EQ(found, fault) << what;
    }
}

TEST(ReplyCheck, OnlyWhatCanAnswerPasses)
{
    const char bits[] = "0000 0000 0006 01 01 0008 0010";
    const char read[] = "0000 0000 0006 01 03 0064 0003";
    const char coil[] = "0000 0000 0006 01 05 0007 FF00";
    const char many[] = "0000 0000 000B 01 10 000A 0002 04 1234 5678";
    using Row = std::tuple<const char *, const char *, const char *, ReplyFault>;
    const Row rows[] = {
        {"the registers asked for", read, "0000 0000 0009 01 03 06 0005 0006 0007", ReplyFault::None},
        {"an exception", read, "0000 0000 0003 01 83 02", ReplyFault::None},
        {"sixteen bits in two bytes", bits, "0000 0000 0005 01 01 02 AA 55", ReplyFault::None},
        {"a single write's echo", coil, coil, ReplyFault::None},
        {"a multiple write's address and quantity", many, "0000 0000 0006 01 10 000A 0002", ReplyFault::None},
        {"another unit's exception", read, "0000 0000 0003 02 83 02", ReplyFault::OtherUnit},
        {"another function", read, "0000 0000 0009 01 04 06 0005 0006 0007", ReplyFault::OtherFunction},
        {"another function's exception", read, "0000 0000 0003 01 84 02", ReplyFault::OtherFunction},
        {"an exception and a byte", read, "0000 0000 0004 01 83 02 00", ReplyFault::WrongByteCount},
        {"of a longer read", read, "0000 0000 000B 01 03 08 0005 0006 0007 0008", ReplyFault::WrongByteCount},
        {"a byte count unlike its bytes", read, "0000 0000 0009 01 03 04 0005 0006 0007", ReplyFault::WrongByteCount},
        {"no byte count", read, "0000 0000 0002 01 03", ReplyFault::WrongByteCount},
        {"the echo of another coil", coil, "0000 0000 0006 01 05 0008 FF00", ReplyFault::WrongEcho},
        {"the echo of another value", coil, "0000 0000 0006 01 05 0007 0000", ReplyFault::WrongEcho},
        {"another quantity", many, "0000 0000 0006 01 10 000A 0003", ReplyFault::WrongEcho},
        {"an echo cut short", many, "0000 0000 0004 01 10 000A", ReplyFault::WrongByteCount},
    };
    for (const auto &[what, request, reply, fault] : rows)
        EXPECT_EQ(checkReply(bytes(request), bytes(reply)), fault) << what;
}

} // namespace
