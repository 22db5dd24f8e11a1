// SPDX-License-Identifier: MIT
// The commands as scripts see them: exit code, and one clear line for what is wrong.

#include "commands.h"
#include "exit_codes.h"

#include <gtest/gtest.h>

#include <QtCore/QStringList>

#include <algorithm>

namespace {

using Command = int (*)(const QStringList &);

struct Ended
{
    int code;
    std::string out;
    std::string err;
};

Ended run(Command command, const char *words)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    QStringList arguments = QString::fromLatin1(words).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    arguments << QStringLiteral("--driver") << QStringLiteral(DRIVER_PATH);
    const int code = command(arguments);
    return {code, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

struct Row
{
    const char *what;
    Command command;
    const char *words;
    int code;
    const char *line; ///< part of what stands on stderr; empty: nothing does
};

TEST(Commands, WrongUsageIsOneLineAndACode)
{
    const Row rows[] = {
        {"no variable", pollCommand, "", ExitUsage, "no variable is named"},
        {"unknown option", readCommand, "--foo hr:1", ExitUsage, "foo"},
        {"bad variable", readCommand, "hr:1 xx:1", ExitUsage, "xx"},
        {"bad number", pollCommand, "--timeout 1s hr:1", ExitUsage, "--timeout takes a number"},
        {"bad policy", pollCommand, "--after-timeout wait hr:1", ExitUsage, "reconnect or drain"},
        {"bad format", readCommand, "--format oct hr:1", ExitUsage, "--format takes"},
        {"bad peer", readCommand, "--connect 1.2.3.4:99999 hr:1", ExitUsage, "HOST:PORT"},
        {"a fault for a real station", readCommand, "--connect 127.0.0.1:1 --fault silence hr:1", ExitUsage,
         "built-in station"},
        {"no such list", readCommand, "--file /nowhere/list", ExitUsage, "/nowhere/list"},
        {"a trace that cannot be written", readCommand, "--trace=/nowhere/trace hr:1", ExitUsage,
         "/nowhere/trace"},
        {"a broadcast read", readCommand, "0/hr:1", ExitUsage, "broadcast"},
        {"a remote register read", pollCommand, "--remote hr:1", ExitUsage, "only coil and input"},
        {"a broadcast bit of a register", writeCommand, "0/hrbit:1.1=1", ExitUsage, "broadcast"},
        {"a read-only area", writeCommand, "ir:1=1", ExitUsage, "read-only"},
        {"no value", writeCommand, "hr:1", ExitUsage, "VARIABLE=VALUE"},
        {"a value too many", writeCommand, "hr:1=1,2", ExitUsage, "hr:1"},
        {"a 32-bit value in blocks of one register", writeCommand, "--block 1 hr32:1=1", ExitUsage,
         "--block"},
        {"nobody listens", readCommand, "--connect 127.0.0.1:1 hr:1", ExitNoLink, "connection refused"},
        {"nobody listens to a poll", pollCommand, "--connect 127.0.0.1:1 hr:1", ExitNoLink,
         "connection refused"},
        {"nobody listens to a write", writeCommand, "--connect 127.0.0.1:1 hr:1=1", ExitNoLink,
         "connection refused"},
    };
    for (const Row &row : rows) {
        const Ended ended = run(row.command, row.words);
        EXPECT_EQ(ended.code, row.code) << row.what;
        EXPECT_NE(ended.err.find(row.line), std::string::npos) << row.what << ": " << ended.err;
        EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << row.what << ": " << ended.err;
        EXPECT_EQ(ended.out, "") << row.what;
    }
}

TEST(Commands, ReadPrintsValuesAndComplainsOfTheRest)
{
    const Ended ended = run(readCommand, "--fault exception=2@address=62 hr:60*2 hr:62 --format hex");
    EXPECT_EQ(ended.code, ExitFailed);
    EXPECT_EQ(ended.out, "hr:60*2 = 0x003C 0x003D\n");
    EXPECT_EQ(ended.err, "modbus-panel read: hr:62: exception 2: illegal data address\n");
}

TEST(Commands, WriteEndsWithTheWorstOutcome)
{
    EXPECT_EQ(run(writeCommand, "hr:60=1 coil:1=1").code, ExitDone);
    EXPECT_EQ(run(writeCommand, "hr:60=1 hr:70=1 --fault exception=2@address=60").code, ExitFailed);
    const Ended unknown = run(writeCommand, "hr:60=1 hr:70=1 --timeout 500 --fault silence@address=60");
    EXPECT_EQ(unknown.code, ExitOutcomeUnknown);
    EXPECT_EQ(unknown.out, "hr:60=1: outcome unknown: no reply; it may or may not have been carried out\n"
                           "hr:70=1: acknowledged\n");
}

TEST(Commands, PollPrintsEachPassAsOneJsonObject)
{
    const Ended ended = run(pollCommand, "--json --passes 1 1/hr:60 2/coil:21");
    EXPECT_EQ(ended.code, ExitDone);
    EXPECT_EQ(std::count(ended.out.begin(), ended.out.end(), '\n'), 1) << ended.out;
    EXPECT_NE(ended.out.find("\"address\":\"1/hr:60\""), std::string::npos) << ended.out;
    EXPECT_NE(ended.out.find("\"values\":[60]"), std::string::npos) << ended.out;
}

TEST(Commands, PollEndsBadlyWhenAVariableFails)
{
    const Ended ended = run(pollCommand, "--passes 2 --every 1 hr:60 --fault exception=2");
    EXPECT_EQ(ended.code, ExitFailed);
    EXPECT_NE(ended.out.find("failed: exception 2: illegal data address, never"), std::string::npos)
        << ended.out;
    EXPECT_NE(ended.out.find("2 x4"), std::string::npos) << "each pass and its retry: " << ended.out;
}

} // namespace
