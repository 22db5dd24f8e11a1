// SPDX-License-Identifier: MIT
// Tells ThreadSanitizer what Qt, built without it, does to let threads take turns: QMutex locks, and the last
// holder of a shared text or byte array frees it. Linked into a test program in front of Qt; built without the
// sanitizer itself.
#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

namespace {

/// Qt's own function, behind the one here that takes its name.
template <typename Function> Function *real(const char *symbol)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, symbol));
}

/// Of a shared value: the first word of what its only member points to.
void *referenceCount(void *value)
{
    return *static_cast<void **>(value);
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

void _ZN6QMutex6unlockEv(void *mutex) // QMutex::unlock()
{
    static const auto unlock = real<void(void *)>("_ZN6QMutex6unlockEv");
    __tsan_mutex_pre_unlock(mutex, 0);
    unlock(mutex);
    __tsan_mutex_post_unlock(mutex, 0);
}

void *_ZN7QStringaSERKS_(void *text, const void *from) // QString::operator=(const QString &)
{
    static const auto assign = real<void *(void *, const void *)>("_ZN7QStringaSERKS_");
    __tsan_acquire(referenceCount(text));
    return assign(text, from);
}

void *_ZN10QByteArrayaSERKS_(void *array, const void *from) // QByteArray::operator=(const QByteArray &)
{
    static const auto assign = real<void *(void *, const void *)>("_ZN10QByteArrayaSERKS_");
    __tsan_acquire(referenceCount(array));
    return assign(array, from);
}
}
#pragma GCC visibility pop
