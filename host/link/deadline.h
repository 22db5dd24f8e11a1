// SPDX-License-Identifier: MIT
/// \file
/// A point in time until which something may wait. Plain value; used by one thread.

#pragma once

#include <QtCore/QElapsedTimer>

class Deadline
{
public:
    /// One of 0 ms is over from the start, and looks at no clock.
    explicit Deadline(int ms) : m_ms(ms)
    {
        if (ms > 0)
            m_timer.start();
    }

    /// Milliseconds that are left; never negative.
    int left() const
    {
        const qint64 left = m_ms > 0 ? m_ms - m_timer.elapsed() : 0;
        return left > 0 ? static_cast<int>(left) : 0;
    }
    bool isOver() const { return left() == 0; }

private:
    qint64 m_ms;
    QElapsedTimer m_timer;
};
