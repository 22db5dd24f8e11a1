// SPDX-License-Identifier: MIT
// Tells ThreadSanitizer what Qt, built without it, does to let threads take turns: QMutex locks, and the last
// holder of a shared text or byte array frees it. Linked into a test program in front of Qt; built without the
// sanitizer itself.
#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

namespace {

/// Qt's own function, behind the one here that takes its name.
template <typename Function> Function *real(const char *symbol)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, symbol));
}

/// Assigns with a hold on what was there, so that its last release is seen here and not lost inside Qt.
template <typename Shared> void *assign(const char *symbol, Shared *to, const Shared *from)
{
    static const auto assigned = real<void *(Shared *, const Shared *)>(symbol);
    const auto data = to->data_ptr();
    const bool isHeld = data->ref.ref();
    void *const result = assigned(to, from);
    __tsan_release(data);
    if (isHeld && !data->ref.deref()) {
        __tsan_acquire(data);
        data->deallocate(data);
    }
    return result;
}

} // namespace

// The driver is to find these before Qt's, so they leave the program.
#pragma GCC visibility push(default)
extern "C" {

void _ZN6QMutex4lockEv(void *mutex) // QMutex::lock()
{
    static const auto lock = real<void(void *)>("_ZN6QMutex4lockEv");
    __tsan_mutex_pre_lock(mutex, __tsan_mutex_linker_init);
    lock(mutex);
    __tsan_mutex_post_lock(mutex, __tsan_mutex_linker_init, 0);
}

bool _ZN6QMutex7tryLockEi(void *mutex, int timeout) // QMutex::tryLock(int)
{
    static const auto tryLock = real<bool(void *, int)>("_ZN6QMutex7tryLockEi");
    const unsigned flags = __tsan_mutex_linker_init | __tsan_mutex_try_lock;
    __tsan_mutex_pre_lock(mutex, flags);
    const bool isLocked = tryLock(mutex, timeout);
    __tsan_mutex_post_lock(mutex, isLocked ? flags : flags | __tsan_mutex_try_lock_failed, 0);
    return isLocked;
}

void _ZN6QMutex6unlockEv(void *mutex) // QMutex::unlock()
{
    static const auto unlock = real<void(void *)>("_ZN6QMutex6unlockEv");
    __tsan_mutex_pre_unlock(mutex, 0);
    unlock(mutex);
    __tsan_mutex_post_unlock(mutex, 0);
}

void *_ZN7QStringaSERKS_(QString *text, const QString *from) // QString::operator=(const QString &)
{
    return assign("_ZN7QStringaSERKS_", text, from);
}

void *_ZN10QByteArrayaSERKS_(QByteArray *array, const QByteArray *from) // QByteArray::operator=(const QByteArray &)
{
    return assign("_ZN10QByteArrayaSERKS_", array, from);
}
}
#pragma GCC visibility pop
