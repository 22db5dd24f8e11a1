// SPDX-License-Identifier: MIT
#include "line_output.h"

#include <QtCore/QElapsedTimer>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
const int mostWaiting = 1 << 20; // bytes
const int lastChanceMs = 200;
const int chunkSize = 4096; // bytes; poll() reports a pipe as writable only when it has room for them
} // namespace

int openWithoutWaiting(int descriptor)
{
    struct stat facts = {};
    if (fstat(descriptor, &facts) != 0)
        return -1;
    // Only for terminals and pipes, since others do not let a writer wait. Opening a file again would lose
    // its position.
    int twin = -1;
    if (isatty(descriptor) == 1 || S_ISFIFO(facts.st_mode)) {
        char path[32];
        std::snprintf(path, sizeof path, "/proc/self/fd/%d", descriptor);
        twin = open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }
    return twin >= 0 ? twin : fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
}

LineOutput::LineOutput(int descriptor) : m_descriptor(openWithoutWaiting(descriptor)) {}

LineOutput::~LineOutput()
{
    QElapsedTimer timer;
    timer.start();
    flush();
    while (!m_waiting.isEmpty() && timer.elapsed() < lastChanceMs) {
        isWritable(lastChanceMs / 10);
        flush();
    }
    if (m_descriptor >= 0)
        close(m_descriptor);
}

void LineOutput::write(const QByteArray &text)
{
    if (m_waiting.size() + text.size() > mostWaiting) {
        ++m_leftOut;
    } else {
        if (m_leftOut > 0)
            m_waiting += "# " + QByteArray::number(m_leftOut) + " lines left out\n";
        m_leftOut = 0;
        m_waiting += text + '\n';
    }
    flush();
}

bool LineOutput::isWritable(int waitMs) const
{
    pollfd output = {m_descriptor, POLLOUT, 0};
    return poll(&output, 1, waitMs) == 1;
}

void LineOutput::flush()
{
    int written = 0;
    while (written < m_waiting.size() && isWritable(0)) {
        const int size = qMin(chunkSize, m_waiting.size() - written);
        const ssize_t taken =
            ::write(m_descriptor, m_waiting.constData() + written, static_cast<size_t>(size));
        if (taken < 0 && (errno == EAGAIN || errno == EINTR))
            break;
        if (taken < 0)
            m_hasFailed = m_hasFailed || errno != EPIPE;
        written += taken < 0 ? size : static_cast<int>(taken); // after an error the bytes are lost
    }
    m_waiting.remove(0, written);
}
