// SPDX-License-Identifier: MIT
/// \file
/// Text to a descriptor whose reader may stop: what it does not take at once waits in memory, and what would be
/// too much there is left out and counted, so that the writer always goes on. Used on one thread at a time.

#pragma once

#include <QtCore/QByteArray>

/// A second descriptor of the same file, terminal or pipe whose writes never wait. Where the system gives none, a
/// copy of the descriptor. The caller closes it; -1 when there is no such descriptor.
int openWithoutWaiting(int descriptor);

class LineOutput
{
public:
    explicit LineOutput(int descriptor);
    /// Gives a slow reader a fifth of a second for what still waits.
    ~LineOutput();
    LineOutput(const LineOutput &) = delete;
    LineOutput &operator=(const LineOutput &) = delete;

    /// Writes the text and a line end, now or with a later call; or leaves it out.
    void write(const QByteArray &text);

    /// Text was refused, by a full disk as a rule. A reader that has left is no failure.
    bool hasFailed() const { return m_hasFailed; }

private:
    void flush();
    bool isWritable(int waitMs) const;

    int m_descriptor;
    QByteArray m_waiting;
    int m_leftOut = 0; ///< lines
    bool m_hasFailed = false;
};
