// SPDX-License-Identifier: MIT
#include "line_output.h"

#include <poll.h>
#include <unistd.h>

// A pipe is writable when it takes 4,096 bytes at once.
bool LineOutput::isWritable() const
{
    pollfd output = {m_descriptor, POLLOUT, 0};
    return poll(&output, 1, 0) == 1 && (output.revents & POLLOUT) != 0;
}

void LineOutput::write(const QByteArray &text)
{
    if (!isWritable()) {
        ++m_leftOut;
        return;
    }
    QByteArray line = text + '\n';
    if (m_leftOut > 0)
        line.prepend("# " + QByteArray::number(m_leftOut) + " left out\n");
    if (::write(m_descriptor, line.constData(), static_cast<size_t>(line.size())) > 0)
        m_leftOut = 0;
}
