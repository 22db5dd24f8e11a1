// SPDX-License-Identifier: MIT
#include "standard_output.h"

#include "exit_codes.h"

#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

bool hasReaderLeft()
{
    pollfd out = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&out, 1, 0) == 1 && (out.revents & POLLERR) != 0;
}

} // namespace

void guardStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    int lowest = open("/dev/null", O_RDWR);
    while (lowest >= 0 && lowest <= STDERR_FILENO)
        lowest = open("/dev/null", O_RDWR);
    if (lowest >= 0)
        close(lowest);
}

int endOutput(int code)
{
    const bool isLost = std::fflush(stdout) != 0 || std::ferror(stdout);
    if (!isLost || hasReaderLeft())
        return code;
    std::fputs("modbus-panel: standard output cannot be written\n", stderr);
    return code == ExitDone ? ExitUsage : code;
}
