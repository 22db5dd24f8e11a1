// SPDX-License-Identifier: MIT
/// \file
/// Locks listMutex or imageMutex. Both are usually held for less than a microsecond, but waking a thread that
/// sleeps takes tens of microseconds. So this lock tries several times before the thread sleeps. Any thread.

#pragma once

#include <QtCore/QMutex>

namespace modbus_driver {

/// Holds a mutex until its own destruction.
class BriefLock
{
public:
    BriefLock() : m_mutex(nullptr) {}
    explicit BriefLock(QMutex *mutex) : m_mutex(nullptr) { take(mutex); }
    ~BriefLock()
    {
        if (m_mutex)
            m_mutex->unlock();
    }

    /// Locks the mutex. Only for a BriefLock that holds none yet.
    void take(QMutex *mutex)
    {
        if (!mutex->tryLock())
            wait(mutex);
        m_mutex = mutex;
    }

private:
    BriefLock(const BriefLock &);            // not copyable
    BriefLock &operator=(const BriefLock &); // not copyable

    static void wait(QMutex *mutex);

    QMutex *m_mutex;
};

} // namespace modbus_driver
