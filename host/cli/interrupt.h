// SPDX-License-Identifier: MIT
/// \file
/// SIGINT, SIGTERM and SIGHUP as a flag that the main thread checks; and a terminal that stays usable whichever signal
/// stops or ends the process.

#pragma once

#include <atomic>

/// From now on the first SIGINT, SIGTERM or SIGHUP sets the flag, and the second ends the process at once with 128 plus
/// its number. SIGHUP stays ignored where it was. After the first, text for stdout or stderr is thrown away when its
/// reader has stopped, so that nothing waits for it.
void catchInterrupts();
const std::atomic<bool> &interruptedFlag();
inline bool isInterrupted()
{
    return interruptedFlag();
}

/// Shows the terminal's second screen, unless it is shown; a terminal at stdin now gives each key at once and unseen.
/// Until leaveTerminal whatever signal stops or ends the process undoes both.
void enterTerminal();
void leaveTerminal();
/// The terminal at stdout belongs to another process: to the shell, for example.
bool isInBackground();
