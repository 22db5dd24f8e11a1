// SPDX-License-Identifier: MIT
#include "interrupt.h"

#include "standard_output.h"

#include <cerrno>
#include <csignal>
#include <initializer_list>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

const int patienceMs = 50; // with a reader, after a signal
const int slowMs = 1000;   // with a terminal, at the end

const char enterScreen[] = "\x1b[?1049h\x1b[?25l"; // second screen, no cursor
const char leaveScreen[] = "\x1b[?25h\x1b[?1049l";

std::atomic<bool> interrupted{false};
std::atomic<bool> entered{false}; ///< set after the mode
int nowhere = -1;                 ///< /dev/null, once signals are caught
termios linesMode;                ///< of stdin; all 0: it is no terminal
static_assert(std::atomic<bool>::is_always_lock_free, "signal handlers use it");

// The functions below run in signal handlers: only functions that are safe there.

bool takesText(int descriptor, int waitMs)
{
    pollfd output = {descriptor, POLLOUT, 0};
    return poll(&output, 1, waitMs) == 1;
}

void setMode(const termios &mode)
{
    if (linesMode.c_cflag != 0 && !isInBackground()) // from there it would stop the process
        tcsetattr(STDIN_FILENO, TCSANOW, &mode);
}

/// Once, however many signals come. Leaves the text out when the terminal does not take it in time.
void leave(int waitMs)
{
    if (!entered.exchange(false))
        return;
    setMode(linesMode);
    if (takesText(STDOUT_FILENO, waitMs))
        (void)!write(STDOUT_FILENO, leaveScreen, sizeof leaveScreen - 1);
}

/// A write that waits for a reader goes on into /dev/null. Comes again, as SIGALRM, for one that waits later.
void interrupt(int signal)
{
    const int error = errno;
    if (signal != SIGALRM && interrupted.exchange(true)) {
        leave(0);
        _exit(128 + signal);
    }
    for (int number : {STDOUT_FILENO, STDERR_FILENO}) {
        if (!takesText(number, patienceMs))
            dup2(nowhere, number);
    }
    alarm(1);
    errno = error;
}

void setHandler(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART | SA_NODEFER; // a write goes on; a handler can raise its signal
    sigaction(signal, &action, nullptr);
}

/// Does what the signal does by default, with the terminal as it was. Returns when a stopped process goes on.
void stopOrEnd(int signal)
{
    const int error = errno;
    leave(0);
    setHandler(signal, SIG_DFL);
    raise(signal); // here it stops or ends
    setHandler(signal, stopOrEnd);
    errno = error;
}

} // namespace

void catchInterrupts()
{
    nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    for (int signal : {SIGINT, SIGTERM, SIGALRM})
        setHandler(signal, interrupt);
    if (std::signal(SIGHUP, SIG_IGN) != SIG_IGN) // nohup
        setHandler(SIGHUP, interrupt);
}

const std::atomic<bool> &interruptedFlag()
{
    return interrupted;
}

void enterTerminal()
{
    if (entered)
        return;
    tcgetattr(STDIN_FILENO, &linesMode);
    termios keysMode = linesMode;
    keysMode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    entered = true;
    for (int signal : {SIGTSTP, SIGQUIT})
        setHandler(signal, stopOrEnd);
    setMode(keysMode);
    print(enterScreen);
}

void leaveTerminal()
{
    leave(slowMs);
    for (int signal : {SIGTSTP, SIGQUIT})
        setHandler(signal, SIG_DFL);
}

bool isInBackground()
{
    const pid_t owner = tcgetpgrp(STDOUT_FILENO);
    return owner >= 0 && owner != getpgrp();
}
