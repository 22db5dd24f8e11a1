// SPDX-License-Identifier: MIT
// The commands as scripts see them: exit code, and one clear line for what is wrong.

#include "../host/cli/commands.h"
#include "../host/cli/exit_codes.h"
#include "host_words.h"

#include <QtCore/QTemporaryFile>

#include <algorithm>
#include <tuple>

#include <unistd.h>

namespace {

using Command = int (*)(const QStringList &);

struct Ended
{
    int code;
    std::string out;
    std::string err;
};

Ended run(Command command, const char *text)
{
    qputenv("MODBUS_DRIVER", DRIVER_PATH);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int code = command(words(text));
    return {code, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

/// `parts` of what it says, with & between them.
void expectEnd(const Ended &ended, int code, const char *parts, const char *what)
{
    const QByteArray said = QByteArray::fromStdString(ended.out + ended.err);
    EXPECT_EQ(ended.code, code) << what << "\n" << ended.err;
    for (const QByteArray &part : QByteArray(parts).split('&'))
        EXPECT_TRUE(said.contains(part)) << what << "\n" << said.constData();
}

TEST(Commands, WhatIsWrongIsOneLineAndACode)
{
    const std::tuple<const char *, Command, const char *, int, const char *> rows[] = {
        {"no variable", pollCommand, "", ExitUsage, "no variable is named"},
        {"unknown option", readCommand, "--foo hr:1", ExitUsage, "foo"},
        {"bad number", pollCommand, "--timeout 1s hr:1", ExitUsage, "--timeout takes a number"},
        {"bad policy", pollCommand, "--after-timeout wait hr:1", ExitUsage, "numbers, reconnect or drain"},
        {"a pass longer than the clock", pollCommand, "--every 2147483647 hr:1", ExitUsage, "--every takes a number"},
        {"a terminal's command", readCommand, "hr:1\x1b[2J", ExitUsage, "hr:1?[2J"},
        {"bad format", readCommand, "--format oct hr:1", ExitUsage, "--format takes"},
        {"bad peer", readCommand, "--connect 1.2.3.4:99999 hr:1", ExitUsage, "HOST:PORT"},
        {"a fault for a real station", readCommand, "--connect 127.0.0.1:1 --fault silence hr:1", ExitUsage, "built-in station"},
        {"no such list", readCommand, "--file /nowhere/list", ExitUsage, "/nowhere/list"},
        {"a list without end", pollCommand, "--file /dev/zero", ExitUsage, "/dev/zero is larger"},
        {"a folder as list", pollCommand, "--file /", ExitUsage, "cannot read /"},
        {"a trace that cannot be written", readCommand, "--trace=/nowhere/trace hr:1", ExitUsage, "/nowhere/trace"},
        {"a broadcast read", readCommand, "0/hr:1", ExitUsage, "broadcast"},
        {"a remote register read", pollCommand, "--remote hr:1", ExitUsage, "only coil and input"},
        {"a broadcast bit of a register", writeCommand, "--simulate 0/hrbit:1.1=1", ExitUsage, "broadcast"},
        {"no station to write to", writeCommand, "hr:1=1", ExitUsage,
         "no station is named: --connect HOST:PORT writes to one, --simulate to a simulated one"},
        {"two stations", readCommand, "--connect 127.0.0.1:1 --simulate hr:1", ExitUsage, "name two stations"},
        {"a read-only area", writeCommand, "--simulate ir:1=1", ExitUsage, "read-only"},
        {"no value", writeCommand, "--simulate hr:1", ExitUsage, "VARIABLE=VALUE"},
        {"a 32-bit value in blocks of one register", writeCommand, "--simulate --block 1 hr32:1=1", ExitUsage, "--block"},
        {"unit 0 in a scan", scanCommand, "--units 0-3", ExitUsage, "--units takes"},
        {"two places for the unit", scanCommand, "--units 1-3 2/hr:0", ExitUsage, "one variable, without unit"},
        {"a scan of nothing", scanCommand, "", ExitUsage, "no variable is named"},
        {"nobody listens to a scan", scanCommand, "--connect 127.0.0.1:1 --units 1-3", ExitNoLink, "connection refused"},
        {"no driver", readCommand, "--driver /nowhere/driver.so hr:1", ExitNoLink, "/nowhere/driver.so"},
        {"no driver's functions", readCommand, "--driver libm.so.6 hr:1", ExitNoLink, "SetComInfo"},
        {"no hexadecimal", decodeCommand, "0x", ExitUsage, "not hexadecimal"},
        {"two kinds of frame", decodeCommand, "--request --reply 00", ExitUsage, "one option"},
        {"a status above a class", statusCommand, "53", ExitUsage, "no status code"},
        {"nobody listens", readCommand, "--connect 127.0.0.1:1 hr:1", ExitNoLink, "connection refused"},
        {"nobody listens to a poll", pollCommand, "--connect 127.0.0.1:1 hr:1", ExitNoLink, "connection refused"},
        {"nobody listens to a write", writeCommand, "--connect 127.0.0.1:1 hr:1=1", ExitNoLink, "connection refused"},
    };
    for (const auto &[what, command, text, code, line] : rows) {
        const Ended ended = run(command, text);
        expectEnd(ended, code, line, what);
        EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << what << ": " << ended.err;
        EXPECT_TRUE(ended.out.empty() || ended.out == "station 127.0.0.1:1\n") << what << ": " << ended.out;
    }
}

TEST(Commands, ReportsAndEndsWithTheWorstOutcome)
{
    const std::tuple<Command, const char *, int, const char *, const char *> rows[] = {
        {readCommand, "--fault exception=2@address=62 hr:60*2 hr:62 --format hex", ExitFailed, "hr:60*2 = 0x003C 0x003D\n",
         "modbus-panel read: no --connect: the values are those of a simulated station\n"
         "modbus-panel read: hr:62: exception 2: illegal data address\n"},
        {readCommand, "--simulate --fault exception=2 hr:49999 hr:50000 input:10001 --timeout 5000", ExitFailed, "",
         "modbus-panel read: hr:49999: exception 2: illegal data address; manuals that count 40001 as the first holding "
         "register mean hr:9998\n"
         "modbus-panel read: hr:50000: exception 2: illegal data address\n"
         "modbus-panel read: input:10001: exception 2: illegal data address; manuals that count 10001 as the first "
         "discrete input mean input:0\n"},
        {scanCommand,
         "--simulate --gap 0 --timeout 300 --units 1-3,5 hr:60 --fault exception=2@unit=2 --fault silence@unit=3 "
         "--fault exception=11@unit=5",
         ExitDone,
         "unit 1: answered, hr:60 = 60\nunit 2: exception 2: illegal data address\nunit 3: silent\n"
         "unit 5: exception 11: no response behind the gateway\n4 of 4 asked, 2 answered, 1 of these with an exception\n",
         ""},
        {scanCommand, "--simulate --gap 0 2/hr:60*2 coil:7*2 hr32:62*2 --fault exception=3@address=61", ExitDone,
         "2/hr:60 = 60\n2/hr:61: exception 3: illegal data value\n1/coil:7 = 0\n1/coil:8 = 0\n1/hr32:62 = 4063295\n"
         "1/hr32:64 = 4194369\n6 of 6 asked, 6 answered, 1 of these with an exception\n",
         ""},
        {writeCommand, "--simulate hr:70=1 hr:71=2 hr:71=3 hr:30=1 --fault exception=6@address=30", ExitFailed,
         "hr:70=1: acknowledged\nhr:71=2: replaced by a later write before it was sent\n"
         "hr:71=3: acknowledged; merged with an earlier write\nhr:30=1: refused with exception 6: device busy\n",
         ""},
        {writeCommand, "--simulate hr:60=1 hr:70=1 --timeout 500 --fault silence@address=60", ExitOutcomeUnknown,
         "hr:60=1: outcome unknown: no reply; it may or may not have been carried out\nhr:70=1: acknowledged\n", ""},
    };
    for (const auto &[command, text, code, out, err] : rows) {
        const Ended ended = run(command, text);
        EXPECT_EQ(ended.code, code) << text;
        EXPECT_EQ(ended.out, std::string("simulated station\n") + out);
        EXPECT_EQ(ended.err, err);
    }
}

TEST(Commands, ScanKeepsTheConnectionThroughSilentUnits)
{
    const Ended ended = run(scanCommand, "--simulate --trace --gap 0 --timeout 30 --units 1-12 --fault silence");
    expectEnd(ended, ExitFailed, "unit 12: silent\n12 of 12 asked", "scan");
    EXPECT_EQ(QByteArray::fromStdString(ended.err).count("# connected"), 1) << ended.err;
}

TEST(Commands, ShowWhatWasAskedFor)
{
    const std::tuple<Command, const char *, int, const char *> rows[] = {
        {pollCommand, "--json --passes 1 1/hr:60 2/coil:21", ExitDone,
         R"("station":"simulated station"&"link_code":"up"&"address":"1/hr:60"&"values":[60]&"state_code":"fresh")"},
        {pollCommand, "--json --passes 2 --every 1 --retries 0 --fault refuse=60@nth=1 hr:60", ExitFailed,
         R"("link_code":"connecting"&"link_code":"backing_off")"},
        {readCommand, "--csv hr:60*2:hex hr:61", ExitDone,
         "\n20&,simulated station,0,up,up,hr:60*2:hex,1/hr:60*2,0x003C 0x003D,,fresh,fresh,0.&,hr:61,1/hr:61,61,,fresh,fresh,0."},
        {pollCommand, "--passes 1 hr:100*125", ExitDone, "simulated station\npass 1, link up\n&  fresh  100 101 & 223 224\n"},
        {pollCommand, "--passes 2 --every 1 hr:60 hr:64 hr:300 --fault exception=2@address=62", ExitFailed,
         "1/hr:64   failed: exception 2: illegal data address, never  -\n&1/hr:300  fresh  &  300\n&2 x4"}, // with retries
        {decodeCommand, "0000:0000:0006:01:03 0x0064,000A", ExitDone,
         "request, 12 bytes: unit 1: read holding registers 100-109"},
        {decodeCommand, "0000 0000 0006 01 10 000A 0002", ExitDone, "reply, 12 bytes: "},
        {decodeCommand, "0000 0000 0006 01 06 000A 0002", ExitDone, "request, or a reply with the same bytes, 12 bytes: "},
        {decodeCommand, "0000 0000 0006 01 01 0305 0008", ExitDone, "request, 12 bytes: &or a reply, 12 bytes: "},
        {decodeCommand, "16 00 00 02 01 0000 00000010 0002 00000000 00000000 FF", ExitFailed, "remote frame, 22 bytes: "},
        {decodeCommand, "01 03 00 64 00 0A 84 12", ExitFailed, "(RTU)&unit 1: read holding registers 100-109"},
        {decodeCommand, "--reply 000000000006 0105000500FF", ExitFailed, "  fault: a coil's value"},
        {decodeCommand, "43 6A 91 F4", ExitDone,
         "ABCD   43 6A 91 F4  1131057652   1131057652       234.57013  high&CDAB   91 F4 43 6A  2448704362  -1846262934&"
         "BADC   6A 43 F4 91  1782838417   1782838417&DCBA   F4 91 6A 43  4103170627   -191796669"},
        {planCommand, "--block 100 hr:8 hr:0*2 hr32:3", ExitDone,
         "0, count 9, reply 27&gap       register 2,&registers 5-7,&\n1 request,"},
        {planCommand, "--block 8 ir:5*12", ExitDone,
         "4, first 5, count 8, reply 25&4, first 13, count 4, reply 17&\n2 requests,&, 0 gaps"},
        {planCommand, "--block 10 coil:3*4 coil:10", ExitDone,
         "1, first 0, count 16, reply 11&bits 0-2,&bits 7-9,&bits 11-15,&3 gaps"},
        {planCommand, "--block 10 hrbit:10.0*16 hr:12", ExitDone, "first 10, count 3, reply 15&gap       register 11,&, 1 gap\n"},
        {planCommand, "--block 10 1/hr:0 2/hr:0 1/hr:3", ExitDone,
         "first 0, count 4, reply 17&registers 1-2,&unit 2: &, 1 gap\n"},
        {planCommand, "hr:0*10 hr:2 hr:12", ExitDone, "first 0, count 13, reply 35&gap       registers 10-11,&, 1 gap\n"},
        {planCommand, "--block 125 hr:0*200", ExitDone, "\n  carries   hr:0*200: registers 0-124, a part of it\nunit 1"},
        {planCommand, "--block 126 hr:0*200", ExitDone, "\n  WARNING   126 registers&--block 125 or less\n"},
        {planCommand, "--block 249 coil:3*4000", ExitDone, "\n  gap       bits 0-2, not asked for\nunit 1"},
        {planCommand, "--block 250 coil:3*4000", ExitDone, "\n  WARNING   2008 bits in&--block 249 or less\n"},
        {planCommand, "--block 98 hr32:0*60", ExitDone, "\n  carries   hr32:0*60: registers 0-97, a part of it\nunit 1"},
        {planCommand, "--block 99 hr32:0*60", ExitDone, "\n  WARNING   hr32:0*60 is cut&an even --block\n"},
        {statusCommand, "44", ExitDone, "44: no reply\n&hostId  3, added to 41\n"},
        {statusCommand, "171", ExitDone, "171: remote: reply of a wrong length\n&hostId  not 1 to 11"},
    };
    for (const auto &[command, text, code, parts] : rows)
        expectEnd(run(command, text), code, parts, text);
}

TEST(Commands, ReadFramesTracesAndListsFromStandardInput)
{
    const char list[] = "--file /dev/stdin";
    const std::tuple<Command, const char *, std::string, int, const char *> rows[] = {
        {&decodeCommand, "",
         "# a trace\nI 2020-02-29 12:00:00.000001\n000000 00 00 00 00 00 06 01 06 00 0a 00 02\n\n# meaning\n"
         "O 2020-02-29 12:00:00.000002\n000000 00 00 00 00 00 06 01 06 00 0a 00 02\n",
         ExitDone, "I 2020-02-29 12:00:00.000001\nrequest, 12 bytes: &O 2020-02-29 12:00:00.000002\nreply, 12 bytes: "},
        {&decodeCommand, "-", "0000 0000 0006 01 03 0000 00FF\n\n0000 0000 0003 01 83 02", ExitFailed,
         "fault: quantity 255&reply, 9 bytes: "},
        {&decodeCommand, "", "0000 0000 0003 01 83 02\n00\nxx\n", ExitUsage, "reply, 9 bytes: &line 3: \"xx\" is not"},
        {&decodeCommand, "", std::string("\0\x1b", 2), ExitUsage, "line 1: \"??\" is not"},
        {&decodeCommand, "", "# no frame\n", ExitUsage, "no bytes are given"},
        {&decodeCommand, "", std::string(200000, '0'), ExitUsage, "line 1: a frame is not that long"},
        {&planCommand, "--block 10 --file /dev/stdin", "2/hr:0*12 tank %1\n2/hrbit:3.1\n2/hr:10\n2/hr:14", ExitDone,
         R"(unit 2: read holding registers 0-9
  request   function 3, first 0, count 10, reply 29 bytes
  bytes     00 00 00 00 00 06 02 03 00 00 00 0A
  carries   tank %1: registers 0-9, a part of it
  carries   2/hrbit:3.1: register 3
unit 2: read holding registers 10-14
  request   function 3, first 10, count 5, reply 19 bytes
  bytes     00 00 00 00 00 06 02 03 00 0A 00 05
  carries   tank %1: registers 10-11, a part of it
  carries   2/hr:10: register 10
  carries   2/hr:14: register 14
  gap       registers 12-13, not asked for
2 requests, 24 bytes sent and 48 bytes received in each pass, 1 gap
)"},
        {&planCommand, list, std::string("hr:1\0\nhr:2", 10), ExitUsage, ":1: variable \"hr:1?\""},
        {&planCommand, list, std::string("hr:1\nhr:2 a\0b", 13), ExitUsage, ":2: the name or unit holds a control character"},
        {&planCommand, list, "hr:1 level \x1b[2J", ExitUsage, ":1: the name or unit holds a control character"},
        {&planCommand, list, "hr:1\xc2\x9b[2J", ExitUsage, ":1: variable \"hr:1?[2J\""},
    };
    const int own = dup(STDIN_FILENO);
    for (const auto &[command, text, input, code, parts] : rows) {
        QTemporaryFile file;
        ASSERT_TRUE(file.open());
        file.write(input.data(), static_cast<qint64>(input.size()));
        file.seek(0);
        dup2(file.handle(), STDIN_FILENO);
        const Ended ended = run(command, text);
        expectEnd(ended, code, parts, input.substr(0, 40).c_str());
        EXPECT_EQ(ended.err.find_first_of("\x1b\x9b"), std::string::npos) << ended.err;
    }
    dup2(own, STDIN_FILENO);
    close(own);
}

} // namespace
