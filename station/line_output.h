// SPDX-License-Identifier: MIT
/// \file
/// Writes lines to a file descriptor without waiting for its reader. Bytes that the descriptor does not
/// accept at once are kept in memory. When too many are kept, further lines are left out and counted. Used on
/// one thread at a time.

#pragma once

#include <QtCore/QByteArray>

/// Returns a second descriptor of the same terminal or pipe, whose writes never wait. For a file, or when
/// that fails, it is a copy of the descriptor. The caller closes it. -1 when `descriptor` is not open.
int openWithoutWaiting(int descriptor);

class LineOutput
{
public:
    explicit LineOutput(int descriptor);
    /// Tries for at most 0.2 seconds to write the lines that are kept.
    ~LineOutput();
    LineOutput(const LineOutput &) = delete;
    LineOutput &operator=(const LineOutput &) = delete;

    /// Writes the text and a line end, or keeps them for a later call, or leaves them out.
    void write(const QByteArray &text);

    /// True after text was lost because of an error, such as a full disk. A reader that closed its end is not
    /// an error.
    bool hasFailed() const { return m_hasFailed; }

private:
    void flush();
    bool isWritable(int waitMs) const;

    int m_descriptor;
    QByteArray m_waiting;
    int m_leftOut = 0; ///< lines
    bool m_hasFailed = false;
};
