// SPDX-License-Identifier: MIT
/// \file
/// Lines to a descriptor whose reader may stop: a line that would have to wait is left out, and counted, so
/// that the station always goes on. Used on one thread.

#pragma once

#include <QtCore/QByteArray>

class LineOutput
{
public:
    explicit LineOutput(int descriptor) : m_descriptor(descriptor) {}

    /// Writes the text, of at most 4,000 bytes, and a line end; or leaves it out.
    void write(const QByteArray &text);

private:
    bool isWritable() const;

    int m_descriptor;
    int m_leftOut = 0;
};
