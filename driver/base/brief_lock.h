// SPDX-License-Identifier: MIT
/// \file
/// Takes listMutex or imageMutex. Both are held for less than a microsecond, a thread that sleeps is woken after tens
/// of them. So a lock that is taken is tried again some times before the thread sleeps. Any thread.

#pragma once

#include <QtCore/QMutex>

namespace modbus_driver {

/// Holds a mutex from construction to destruction.
class BriefLock
{
public:
    explicit BriefLock(QMutex *mutex) : m_mutex(mutex)
    {
        for (int tries = 0; tries < mostTries; ++tries) {
            if (mutex->tryLock())
                return;
        }
        mutex->lock();
    }
    ~BriefLock() { m_mutex->unlock(); }

private:
    BriefLock(const BriefLock &);            // not made
    BriefLock &operator=(const BriefLock &); // not made

    /// Beside a cycle without a pause a write then waits at most 1.2 instead of 20 microseconds in 99.9 % of all
    /// calls, a read 0.2 instead of 1.0 (driver-bench, panel_wait, against QMutexLocker).
    enum { mostTries = 100 };

    QMutex *const m_mutex;
};

} // namespace modbus_driver
