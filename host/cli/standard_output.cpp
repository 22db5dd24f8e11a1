// SPDX-License-Identifier: MIT
#include "standard_output.h"

#include "exit_codes.h"
#include "interrupt.h"

#include "../../station/line_output.h"

#include <cerrno>
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

const int sliceMs = 50;        // how long a wait goes on after a signal
const size_t pieceSize = 4096; // a pipe that is writable takes so much at once, also where writes may wait
const char *lostOutput = nullptr;

bool hasReaderLeft()
{
    pollfd out = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&out, 1, 0) == 1 && (out.revents & POLLERR) != 0;
}

/// The write function of a stream. `cookie` points to the descriptor. Less than `size` means failure.
ssize_t writeUntilInterrupted(void *cookie, const char *bytes, size_t size)
{
    const int descriptor = *static_cast<int *>(cookie);
    size_t written = 0;
    while (written < size) {
        pollfd output = {descriptor, POLLOUT, 0};
        if (poll(&output, 1, sliceMs) != 1) {
            if (isInterrupted())
                break;
            continue;
        }
        const size_t piece = size - written < pieceSize ? size - written : pieceSize;
        const ssize_t taken = write(descriptor, bytes + written, piece);
        if (taken < 0 && errno != EAGAIN && errno != EINTR)
            break;
        written += taken < 0 ? 0 : static_cast<size_t>(taken);
    }
    return static_cast<ssize_t>(written);
}

std::FILE *interruptibleStream(int number, int *descriptor, int buffering)
{
    *descriptor = openWithoutWaiting(number);
    std::FILE *stream = fopencookie(descriptor, "w", {nullptr, writeUntilInterrupted, nullptr, nullptr});
    if (stream)
        std::setvbuf(stream, nullptr, buffering, BUFSIZ);
    return stream;
}

} // namespace

void guardStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    if (fcntl(STDOUT_FILENO, F_GETFD) < 0)
        noteLostOutput("standard output");
    int lowest = open("/dev/null", O_RDWR);
    while (lowest >= 0 && lowest <= STDERR_FILENO)
        lowest = open("/dev/null", O_RDWR);
    if (lowest >= 0)
        close(lowest);
}

void endOutputAtInterrupts()
{
    static int descriptors[2];
    const int buffering = isatty(STDOUT_FILENO) == 1 ? _IOLBF : _IOFBF;
    if (std::FILE *out = interruptibleStream(STDOUT_FILENO, &descriptors[0], buffering))
        stdout = out;
    if (std::FILE *err = interruptibleStream(STDERR_FILENO, &descriptors[1], _IONBF))
        stderr = err;
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
