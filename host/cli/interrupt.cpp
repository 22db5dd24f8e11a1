// SPDX-License-Identifier: MIT
#include "interrupt.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <initializer_list>

#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

std::atomic<bool> interrupted{false};
std::atomic<const char *> leaveText{nullptr}; ///< null: the terminal is as it was
termios linesMode;                            ///< of stdin, set before the text; all 0: it is no terminal
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<const char *>::is_always_lock_free,
              "signal handlers use them");

// The functions below run in signal handlers: only functions that are safe there.

/// Leaves the text out when the terminal does not take it.
void writeToTerminal(const char *text)
{
    pollfd output = {STDOUT_FILENO, POLLOUT, 0};
    if (poll(&output, 1, 0) == 1)
        (void)!write(STDOUT_FILENO, text, std::strlen(text));
}

void setMode(const termios &mode)
{
    if (linesMode.c_cflag != 0 && !isInBackground()) // from there it would stop the process
        tcsetattr(STDIN_FILENO, TCSANOW, &mode);
}

/// Once, however many signals come.
void leave()
{
    const char *text = leaveText.exchange(nullptr);
    if (!text)
        return;
    setMode(linesMode);
    writeToTerminal(text);
}

void interrupt(int signal)
{
    if (!interrupted.exchange(true))
        return;
    leave();
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
    leave();
    setHandler(signal, SIG_DFL);
    sigset_t own;
    sigemptyset(&own);
    sigaddset(&own, signal);
    raise(signal);
    pthread_sigmask(SIG_UNBLOCK, &own, nullptr); // here it stops or ends
    setHandler(signal, stopOrEnd);
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

const std::atomic<bool> &interruptedFlag()
{
    return interrupted;
}

bool enterTerminal(const char *leave)
{
    const bool hasKeys = tcgetattr(STDIN_FILENO, &linesMode) == 0;
    termios keysMode = linesMode;
    keysMode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    leaveText = leave;
    for (int signal : {SIGTSTP, SIGQUIT})
        setHandler(signal, stopOrEnd);
    setMode(keysMode);
    return hasKeys;
}

void leaveTerminal()
{
    leave();
    for (int signal : {SIGTSTP, SIGQUIT})
        setHandler(signal, SIG_DFL);
}

bool isTerminalEntered()
{
    return leaveText != nullptr;
}

bool isInBackground()
{
    const pid_t owner = tcgetpgrp(STDOUT_FILENO);
    return owner >= 0 && owner != getpgrp();
}
