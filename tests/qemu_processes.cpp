// SPDX-License-Identifier: MIT
// Only in tests that run under qemu-arm. That emulator knows the wait for a process descriptor but not the
// clone that makes one; Qt asks for the first, trusts the second, and QProcess starts nothing. Told that
// there is no such wait, Qt starts processes the older way.
#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

extern "C" __attribute__((visibility("default"))) long syscall(long number, ...) noexcept
{
    va_list list;
    va_start(list, number);
    long words[6];
    for (long &word : words)
        word = va_arg(list, long);
    va_end(list);
    if (number == SYS_waitid && words[0] == P_PIDFD) {
        errno = EINVAL;
        return -1;
    }
    using Syscall = long (*)(long, ...);
    static const Syscall real = reinterpret_cast<Syscall>(dlsym(RTLD_NEXT, "syscall"));
    return real(number, words[0], words[1], words[2], words[3], words[4], words[5]);
}
