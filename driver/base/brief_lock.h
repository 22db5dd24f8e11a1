// SPDX-License-Identifier: MIT
/// \file
/// Takes listMutex or imageMutex. Both are held for less than a microsecond, and a thread that sleeps is woken after
/// tens of them. So a mutex that is taken is tried again some times before the thread sleeps. Any thread.

#pragma once

#include <QtCore/QMutex>

namespace modbus_driver {

/// Holds a mutex until its end.
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

    /// For a lock that holds nothing yet.
    void take(QMutex *mutex)
    {
        if (!mutex->tryLock())
            wait(mutex);
        m_mutex = mutex;
    }

private:
    BriefLock(const BriefLock &);            // not made
    BriefLock &operator=(const BriefLock &); // not made

    static void wait(QMutex *mutex);

    QMutex *m_mutex;
};

} // namespace modbus_driver
