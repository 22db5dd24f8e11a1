// SPDX-License-Identifier: MIT
/// \file
/// What happens when standard output is closed, full or read by nobody any more. On the main thread.

#pragma once

/// Before anything else is opened: a closed standard stream becomes /dev/null, since a socket that got its
/// number would send the station what is printed. A reader that leaves a pipe no longer ends the process.
void guardStandardStreams();

/// Flushes, and returns what to end with: `code`, also when the reader of a pipe has left. When output was
/// lost otherwise, a line on stderr says so, and ExitDone becomes ExitUsage.
int endOutput(int code);
