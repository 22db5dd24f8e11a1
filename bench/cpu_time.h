// SPDX-License-Identifier: MIT
// The CPU time of this process.

#pragma once

#include <sys/resource.h>

namespace bench {

/// In the program and in the system on its behalf.
inline double cpuSeconds()
{
    rusage usage;
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

} // namespace bench
