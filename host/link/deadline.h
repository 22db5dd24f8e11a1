// SPDX-License-Identifier: MIT
/// \file
/// A point in time until which something may wait. Plain value; used by one thread.

#pragma once

#include <QtCore/QElapsedTimer>

class Deadline
{
public:
    explicit Deadline(int ms) : m_ms(ms) { m_timer.start(); }

    /// Milliseconds that are left; never negative.
    int left() const
    {
        const qint64 left = m_ms - m_timer.elapsed();
        return left > 0 ? static_cast<int>(left) : 0;
    }
    bool isOver() const { return left() == 0; }

private:
    qint64 m_ms;
    QElapsedTimer m_timer;
};
