// SPDX-License-Identifier: MIT
#include "interrupt.h"

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

void interrupt(int)
{
    interrupted = true;
}

} // namespace

void catchInterrupts()
{
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, interrupt);
}

bool isInterrupted()
{
    return interrupted;
}
