// SPDX-License-Identifier: MIT
#include "interrupt.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <initializer_list>

#include <poll.h>
#include <unistd.h>

namespace {

std::atomic<bool> interrupted{false};
std::atomic<const char *> enterText{nullptr};
std::atomic<const char *> leaveText{nullptr}; ///< null: the terminal is as it was
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<const char *>::is_always_lock_free,
              "signal handlers use them");

// The functions below run in signal handlers: only functions that are safe there.

/// Leaves the text out when the terminal does not take it.
void writeToTerminal(const char *text)
{
    pollfd output = {STDOUT_FILENO, POLLOUT, 0};
    if (text && poll(&output, 1, 0) == 1)
        (void)!write(STDOUT_FILENO, text, std::strlen(text));
}

void interrupt(int signal)
{
    if (!interrupted.exchange(true))
        return;
    writeToTerminal(leaveText);
    _exit(128 + signal);
}

void setHandler(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigaction(signal, &action, nullptr);
}

/// Does what the signal does by default, with the terminal as it was. Returns when a stopped process goes on.
void stopOrEnd(int signal)
{
    const int error = errno;
    writeToTerminal(leaveText);
    setHandler(signal, SIG_DFL);
    sigset_t own;
    sigemptyset(&own);
    sigaddset(&own, signal);
    raise(signal);
    pthread_sigmask(SIG_UNBLOCK, &own, nullptr); // here it stops or ends
    setHandler(signal, stopOrEnd);
    writeToTerminal(leaveText ? enterText.load() : nullptr);
    errno = error;
}

bool isIgnored(int signal)
{
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

void catchInterrupts()
{
    setHandler(SIGINT, interrupt);
    setHandler(SIGTERM, interrupt);
    if (!isIgnored(SIGHUP)) // nohup
        setHandler(SIGHUP, interrupt);
}

bool isInterrupted()
{
    return interrupted;
}

void enterTerminal(const char *enter, const char *leave)
{
    enterText = enter;
    leaveText = leave;
    for (int signal : {SIGTSTP, SIGQUIT})
        setHandler(signal, stopOrEnd);
}

void leaveTerminal()
{
    leaveText = nullptr;
    for (int signal : {SIGTSTP, SIGQUIT})
        setHandler(signal, SIG_DFL);
}
