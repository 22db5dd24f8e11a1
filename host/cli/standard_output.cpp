// SPDX-License-Identifier: MIT
#include "standard_output.h"

#include "exit_codes.h"
#include "interrupt.h"

#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

const char *lostOutput = nullptr;

bool hasReaderLeft()
{
    pollfd out = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&out, 1, 0) == 1 && (out.revents & POLLERR) != 0;
}

} // namespace

void guardStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    if (fcntl(STDOUT_FILENO, F_GETFD) < 0)
        noteLostOutput("standard output");
    int lowest = STDIN_FILENO;
    while (lowest >= 0 && lowest <= STDERR_FILENO)
        lowest = open("/dev/null", O_RDWR);
    close(lowest);
}

void print(const QByteArray &text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

void printLine(const QString &text)
{
    print(text.toLocal8Bit() + '\n');
}

void noteLostOutput(const char *what)
{
    lostOutput = what;
}

int endOutput(int code)
{
    const bool isStdoutLost = std::fflush(stdout) != 0 || std::ferror(stdout);
    if (isStdoutLost && !hasReaderLeft() && !isInterrupted())
        noteLostOutput("standard output");
    if (!lostOutput)
        return code;
    std::fprintf(stderr, "modbus-panel: %s cannot be written\n", lostOutput);
    lostOutput = nullptr;
    return code == ExitDone ? ExitUsage : code;
}
