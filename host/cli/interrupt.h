// SPDX-License-Identifier: MIT
/// \file
/// SIGINT, SIGTERM and SIGHUP as a flag that the main thread checks; and a terminal that stays usable whichever signal
/// stops or ends the process.

#pragma once

/// From now on the first SIGINT, SIGTERM or SIGHUP sets the flag, and the second ends the process at once with 128 plus
/// its number. SIGHUP stays ignored where it was.
void catchInterrupts();
bool isInterrupted();

/// What is written to stdout when the process stops or ends at once, and when it goes on; both texts must outlive all
/// signals. Until leaveTerminal SIGTSTP and SIGQUIT write them too.
void enterTerminal(const char *enter, const char *leave);
void leaveTerminal();
