// SPDX-License-Identifier: MIT
// The program as a whole: signals in each of its waits, readers that stop, and a terminal that stays usable.

#include "../host/cli/interrupt.h"

#include <gtest/gtest.h>

#include <QtCore/QByteArray>
#include <QtCore/QElapsedTimer>
#include <QtCore/QList>

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>

namespace {
const int patience = 20000;
const int endsWithinMs = 2000; // half a second, and what a busy machine adds

const char enterScreen[] = "\x1b[?1049h";
const char leaveScreen[] = "\x1b[?25h\x1b[?1049l";

// modbus-panel with its output in two pipes, or in a shell on a terminal. Nothing is read unless it is asked for.
class Program
{
public:
    enum Output { Pipes, FullPipe, Terminal, ClosedOutput };

    explicit Program(const char *words, Output output = Pipes)
    {
        int out[2], err[2];
        EXPECT_TRUE(pipe(out) == 0 && pipe(err) == 0);
        const QByteArray fill(output == FullPipe ? fcntl(out[1], F_GETPIPE_SZ) : 0, ' ');
        EXPECT_EQ(::write(out[1], fill.constData(), static_cast<size_t>(fill.size())), fill.size());
        pid = output == Terminal ? forkpty(&terminal, nullptr, nullptr, nullptr) : fork();
        if (pid == 0) {
            if (output != Terminal) {
                dup2(out[1], STDOUT_FILENO);
                dup2(err[1], STDERR_FILENO);
            }
            if (output == ClosedOutput)
                close(STDOUT_FILENO);
            closefrom(STDERR_FILENO + 1);
            execute(words, output == Terminal);
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
    QByteArray read(int from, const QByteArray &text)
    {
        QByteArray all;
        m_unread.swap(all);
        char bytes[4096];
        pollfd ready = {from, POLLIN, 0};
        QElapsedTimer timer; // a screen is drawn again and again
        timer.start();
        while ((text.isEmpty() || !all.contains(text)) && timer.elapsed() < patience && poll(&ready, 1, patience) == 1) {
            const ssize_t count = ::read(from, bytes, sizeof bytes);
            if (count <= 0)
                break;
            all.append(bytes, static_cast<int>(count));
        }
        const int end = text.isEmpty() || !all.contains(text) ? all.size() : all.indexOf(text) + text.size();
        m_unread = all.mid(end);
        return all.left(end);
    }
    QByteArray output(const QByteArray &text = QByteArray()) { return read(outEnd, text); }
    QByteArray errors() { return read(errEnd, QByteArray()); }

    // Until what lies in the pipe grows no more.
    static void waitUntilFull(int pipeEnd)
    {
        int before = -1, held = 0;
        while (held == 0 || held != before) {
            before = held;
            usleep(300000);
            ioctl(pipeEnd, FIONREAD, &held);
        }
    }

    // How it ended: the exit code, or minus the signal; 999: it goes on.
    int end(int withinMs = patience)
    {
        QElapsedTimer timer;
        timer.start();
        int status = 0;
        while (waitpid(pid, &status, WNOHANG) != pid) {
            if (timer.elapsed() > withinMs)
                return 999;
            usleep(1000);
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    pid_t pid = 0;
    int outEnd = -1, errEnd = -1, terminal = -1;

private:
    QByteArray m_unread; // what came behind the text that was waited for

    [[noreturn]] static void execute(const QByteArray &words, bool inShell)
    {
        const QByteArray command = QByteArray(PANEL_COMMAND) + ' ' + words;
        QList<QByteArray> all = command.simplified().split(' ');
        if (inShell) // with jobs: each has a process group of its own
            all = {"/bin/bash", "-c", "ulimit -c 0; set -m; " + command + "; echo [$?]; fg; echo [$?]"};
        std::vector<char *> pointers;
        for (QByteArray &word : all)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        execv(pointers[0], pointers.data());
        _exit(127);
    }
};

struct Wait
{
    const char *name, *words;
    const char *shown; // what it prints before it waits; empty: it is given a quarter of a second
    int code;          // with which the signal ends it
};

const Wait waits[] = {
    {"for the next pass", "poll --every 3600000 --json hr:60", "pass", 0},
    {"for the gap", "poll --gap 3600000 --every 0 hr:60", "", 0},
    {"in a flood", "poll --after-timeout drain --timeout 3600000 --every 0 --fault flood=3600 hr:60", "", 0},
    {"for a reply of a poll", "poll --timeout 3600000 --fault silence hr:60", "", 0},
    {"for a reply of a read", "read --timeout 3600000 --fault silence hr:60", "", 1},
    {"for a reply of a write", "write --simulate --timeout 3600000 --fault silence hr:60=1", "", 4},
};

TEST(Signals, EndEveryWait)
{
    for (const Wait &wait : waits) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            Program program(wait.words);
            EXPECT_TRUE(*wait.shown == '\0' || program.output(wait.shown).contains(wait.shown)) << wait.name;
            usleep(250000);
            kill(program.pid, signal);
            EXPECT_EQ(program.end(endsWithinMs), wait.code) << wait.name << ", signal " << signal;
        }
    }
}

TEST(Signals, EndAProgramWhoseReaderHasStopped)
{
    Program program("poll --every 0 --json hr:60");
    program.waitUntilFull(program.outEnd);
    kill(program.pid, SIGINT);
    EXPECT_EQ(program.end(endsWithinMs), 0);

    Program report("write --simulate --timeout 3600000 --fault silence hr:60=1", Program::FullPipe);
    usleep(250000);
    kill(report.pid, SIGINT);
    EXPECT_EQ(report.end(endsWithinMs), 4) << "the report finds no reader";
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

// More than the pipe and the trace's memory hold.
TEST(Trace, ThatIsNotReadStopsNothing)
{
    Program program("poll --every 0 --json --trace hr:60");
    program.waitUntilFull(program.errEnd);
    EXPECT_TRUE(program.output("\"pass\":10000,").contains("\"pass\":10000,"));
    kill(program.pid, SIGINT);
    program.output();
    EXPECT_EQ(program.end(endsWithinMs), 0);
}

TEST(Output, ThatIsLostIsTold)
{
    Program full("poll --simulate --passes 1 --trace=/dev/full hr:60");
    EXPECT_EQ(full.errors(), "modbus-panel: the trace cannot be written\n");
    EXPECT_EQ(full.end(), 2);
    Program closed("read --simulate hr:60", Program::ClosedOutput);
    EXPECT_EQ(closed.errors(), "modbus-panel: standard output cannot be written\n");
    EXPECT_EQ(closed.end(), 2);
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
