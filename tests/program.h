// SPDX-License-Identifier: MIT
/// \file
/// A program under test, as a shell runs it, with its output in two pipes or on a terminal. Nothing is read unless it is
/// asked for.

#pragma once

#include <gtest/gtest.h>

#include <QtCore/QByteArray>
#include <QtCore/QElapsedTimer>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

const int patience = 60000; // milliseconds; a busy machine takes long

class Program
{
public:
    enum Output { Pipes, FullPipe, Terminal };

    explicit Program(const QByteArray &command, Output output = Pipes)
    {
        int out[2], err[2];
        EXPECT_TRUE(pipe2(out, O_CLOEXEC) == 0 && pipe2(err, O_CLOEXEC) == 0);
        const QByteArray fill(output == FullPipe ? fcntl(out[1], F_GETPIPE_SZ) : 0, ' ');
        EXPECT_EQ(::write(out[1], fill.constData(), static_cast<size_t>(fill.size())), fill.size());
        // With jobs, so that each has a process group of its own.
        const QByteArray line =
            output == Terminal ? "ulimit -c 0; set -m; " + command + "; echo [$?]; fg; echo [$?]" : "exec " + command;
        pid = output == Terminal ? forkpty(&terminal, nullptr, nullptr, nullptr) : fork();
        if (pid == 0) {
            if (output != Terminal) {
                dup2(out[1], STDOUT_FILENO);
                dup2(err[1], STDERR_FILENO);
            }
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
    QByteArray output(const QByteArray &text = QByteArray()) const { return read(outEnd, text); }
    QByteArray errors(const QByteArray &text = QByteArray()) const { return read(errEnd, text); }

    // How it ended, after this signal or by itself: the exit code, or minus the signal; 999: it goes on.
    int end(int signal = 0)
    {
        kill(pid, signal);
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

private:
    static QByteArray read(int from, const QByteArray &text)
    {
        QByteArray all;
        char bytes[4096];
        pollfd ready = {from, POLLIN, 0};
        QElapsedTimer timer; // a screen is drawn again and again
        timer.start();
        while ((text.isEmpty() || !all.endsWith(text)) && timer.elapsed() < patience && ::poll(&ready, 1, patience) == 1) {
            const ssize_t count = ::read(from, bytes, text.isEmpty() ? sizeof bytes : 1);
            if (count <= 0)
                break;
            all.append(bytes, static_cast<int>(count));
        }
        return all;
    }
};
