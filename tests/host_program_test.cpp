// SPDX-License-Identifier: MIT
// The program as a whole: signals in each of its waits, readers that stop, and a terminal that stays usable.

#include "../host/cli/interrupt.h"
#include "loopback_listener.h"
#include "program.h"

#include <cstring>

#include <array>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

namespace {
const char enterScreen[] = "\x1b[?1049h";
const char leaveScreen[] = "\x1b[?25h\x1b[?1049l";

struct Panel : Program
{
    explicit Panel(const QByteArray &words, Output output = Pipes) : Program(PANEL_COMMAND " " + words, output) {}
};

const char sent[] = "\nI ", received[] = "\nO ";

TEST(Signals, EndEveryWait)
{
    LoopbackListener full;
    full.fill();
    const QByteArray connecting = "read --timeout 3600000 --connect 127.0.0.1:" + QByteArray::number(full.port()) + " hr:60";
    // Words, what is traced before the wait, and the code with which the signal ends it.
    const std::tuple<QByteArray, const char *, int> waits[] = {
        {"poll --every 3600000 hr:60", received, 0},
        {"poll --gap 3600000 --every 0 hr:60", received, 0},
        {"poll --every 0 --fault flood=3600 hr:60", "thrown away", 0},
        {"poll --timeout 3600000 --fault silence hr:60", sent, 0},
        {"read --timeout 3600000 --fault silence hr:60", sent, 1},
        {"write --simulate --timeout 3600000 --fault silence hr:60=1", sent, 4},
        {"scan --units 1-3 --timeout 3600000 --fault silence", sent, 1},
        {connecting, "text2pcap", 1},
    };
    const std::array<int, 3> signals = {SIGINT, SIGTERM, SIGHUP};
    std::vector<std::unique_ptr<Panel>> programs;
    for (const auto &[words, traced, code] : waits) {
        for (std::size_t i = 0; i < signals.size(); ++i)
            programs.push_back(std::make_unique<Panel>(words + " --trace"));
    }
    for (std::size_t i = 0; i < programs.size(); ++i) {
        const auto &[words, traced, code] = waits[i / signals.size()];
        EXPECT_TRUE(programs[i]->errors(traced).endsWith(traced)) << words.constData();
        kill(programs[i]->pid, signals[i % signals.size()]);
    }
    for (std::size_t i = 0; i < programs.size(); ++i)
        EXPECT_EQ(programs[i]->end(), std::get<int>(waits[i / signals.size()]))
            << std::get<QByteArray>(waits[i / signals.size()]).constData();
}

TEST(Signals, EndAProgramWhoseReaderHasStopped)
{
    const std::pair<const char *, int> rows[] = {
        {"poll --every 0 --json --trace hr:60", 0},
        {"write --simulate --trace --timeout 3600000 --fault silence hr:60=1", 4}, // waits at its report
    };
    for (const auto &[words, code] : rows) {
        Panel program(words, Panel::FullPipe);
        EXPECT_TRUE(program.errors(sent).endsWith(sent)) << words;
        usleep(300000); // it writes
        EXPECT_EQ(program.end(SIGINT), code) << words;
    }
}

TEST(Signals, EndAProgramAtTheSecondOne)
{
    const auto twice = [] {
        catchInterrupts();
        raise(SIGINT);
        if (isInterrupted())
            raise(SIGTERM);
    };
    EXPECT_EXIT(twice(), testing::ExitedWithCode(128 + SIGTERM), "");
}

// More than the pipe and the trace's memory hold: a megabyte, and each pass is traced in 800 bytes.
TEST(Trace, ThatIsNotReadStopsNothing)
{
    Panel program("poll --passes 1500 --every 0 --json --trace hr:0*100");
    EXPECT_EQ(program.output().count("\"pass\":"), 1500) << "each is recorded";
    EXPECT_EQ(program.end(), 0);
}

TEST(Output, ThatIsLostIsTold)
{
    const std::pair<const char *, const char *> rows[] = {
        {"poll --simulate --passes 1 --trace=/dev/full hr:60", "modbus-panel: the trace cannot be written\n"},
        {"poll --simulate --every 1 hr:60 >/dev/full", "modbus-panel: standard output cannot be written\n"},
        {"read --simulate hr:60 >&-", "modbus-panel: standard output cannot be written\n"},
    };
    for (const auto &[words, complaint] : rows) {
        Panel program(words);
        EXPECT_EQ(program.errors(), complaint) << words;
        EXPECT_EQ(program.end(), 2) << words;
    }
    Panel unread("poll --simulate --every 1 --trace hr:60");
    close(std::exchange(unread.outEnd, -1));
    close(std::exchange(unread.errEnd, -1));
    EXPECT_EQ(unread.end(), 0) << "the readers have what they wanted";
}

// Each key, and what the terminal must then show: the screen left before the shell reports the end, or the stop.
TEST(Screen, IsLeftWhicheverKeyEndsOrStopsTheProgram)
{
    const std::pair<const char *, std::vector<std::pair<const char *, const char *>>> rows[] = {
        {"Ctrl-C", {{"\x03", "[0]"}}},
        {"Ctrl-\\", {{"\x1c", "[131]"}}},
        {"Ctrl-Z, fg, Ctrl-C", {{"\x1a", "[148]"}, {"", enterScreen}, {"\x03", "[0]"}}},
    };
    for (const auto &[name, steps] : rows) {
        Panel program("poll hr:60", Panel::Terminal);
        EXPECT_TRUE(program.output("pass 1").contains(enterScreen)) << name;
        for (const auto &[key, shown] : steps) {
            EXPECT_EQ(::write(program.terminal, key, strlen(key)), static_cast<ssize_t>(strlen(key)));
            const QByteArray output = program.output(shown);
            EXPECT_TRUE(output.contains(shown)) << name << ": " << output.toStdString();
            EXPECT_EQ(output.contains(leaveScreen), *key != '\0') << name << ": " << output.toStdString();
        }
    }
}
} // namespace
