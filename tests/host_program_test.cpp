// SPDX-License-Identifier: MIT
// The program as a whole: signals in each of its waits, readers that stop, and a terminal that stays usable.

#include "../host/cli/interrupt.h"
#include "loopback_listener.h"

#include <QtCore/QByteArray>
#include <QtCore/QElapsedTimer>

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

namespace {
const int patience = 20000; // half a second, and what a busy machine adds

const char enterScreen[] = "\x1b[?1049h";
const char leaveScreen[] = "\x1b[?25h\x1b[?1049l";

// modbus-panel as a shell runs it, with its output in two pipes or on a terminal. Nothing is read unless it is asked for.
class Program
{
public:
    enum Output { Pipes, FullPipe, Terminal };

    explicit Program(const QByteArray &words, Output output = Pipes)
    {
        int out[2], err[2];
        EXPECT_TRUE(pipe(out) == 0 && pipe(err) == 0);
        const QByteArray fill(output == FullPipe ? fcntl(out[1], F_GETPIPE_SZ) : 0, ' ');
        EXPECT_EQ(::write(out[1], fill.constData(), static_cast<size_t>(fill.size())), fill.size());
        const QByteArray command = PANEL_COMMAND " " + words;
        // With jobs, so that each has a process group of its own.
        const QByteArray line =
            output == Terminal ? "ulimit -c 0; set -m; " + command + "; echo [$?]; fg; echo [$?]" : "exec " + command;
        pid = output == Terminal ? forkpty(&terminal, nullptr, nullptr, nullptr) : fork();
        if (pid == 0) {
            if (output != Terminal) {
                dup2(out[1], STDOUT_FILENO);
                dup2(err[1], STDERR_FILENO);
            }
            closefrom(STDERR_FILENO + 1);
            execl("/bin/bash", "bash", "-c", line.constData(), nullptr);
            _exit(127);
        }
        close(out[1]);
        close(err[1]);
        outEnd = output == Terminal ? terminal : out[0];
        errEnd = err[0];
    }
    ~Program()
    {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        close(outEnd);
        close(errEnd);
    }

    // Reads up to the end of the text; everything up to the end of the output when it is empty.
    static QByteArray read(int from, const QByteArray &text)
    {
        QByteArray all;
        char bytes[4096];
        pollfd ready = {from, POLLIN, 0};
        QElapsedTimer timer; // a screen is drawn again and again
        timer.start();
        while ((text.isEmpty() || !all.endsWith(text)) && timer.elapsed() < patience && poll(&ready, 1, patience) == 1) {
            const ssize_t count = ::read(from, bytes, text.isEmpty() ? sizeof bytes : 1);
            if (count <= 0)
                break;
            all.append(bytes, static_cast<int>(count));
        }
        return all;
    }
    QByteArray output(const QByteArray &text = QByteArray()) const { return read(outEnd, text); }
    QByteArray errors(const QByteArray &text = QByteArray()) const { return read(errEnd, text); }

    // How it ended: the exit code, or minus the signal; 999: it goes on.
    int end()
    {
        QElapsedTimer timer;
        timer.start();
        int status = 0;
        while (waitpid(pid, &status, WNOHANG) != pid) {
            if (timer.elapsed() > patience)
                return 999;
            usleep(1000);
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    pid_t pid = 0;
    int outEnd = -1, errEnd = -1, terminal = -1;
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
    std::vector<std::unique_ptr<Program>> programs;
    for (const auto &[words, traced, code] : waits) {
        for (std::size_t i = 0; i < signals.size(); ++i)
            programs.push_back(std::make_unique<Program>(words + " --trace"));
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
        Program program(words, Program::FullPipe);
        EXPECT_TRUE(program.errors(sent).endsWith(sent)) << words;
        usleep(300000); // it writes
        kill(program.pid, SIGINT);
        EXPECT_EQ(program.end(), code) << words;
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
    Program program("poll --passes 1500 --every 0 --json --trace hr:0*100");
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
        Program program(words);
        EXPECT_EQ(program.errors(), complaint) << words;
        EXPECT_EQ(program.end(), 2) << words;
    }
    Program unread("poll --simulate --every 1 --trace hr:60");
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
        Program program("poll hr:60", Program::Terminal);
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
