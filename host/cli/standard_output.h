// SPDX-License-Identifier: MIT
/// \file
/// Handles a standard output that is closed, full, or no longer read. On the main thread.

#pragma once

/// Called before anything else is opened. Opens /dev/null for a closed standard stream: otherwise a socket could get
/// its number, and printed text would go to the station. SIGPIPE no longer ends the process.
void guardStandardStreams();

/// Flushes, and returns the exit code: `code`, also when the reader of a pipe has left. When output was lost for
/// another reason, a line on stderr says so, and ExitDone becomes ExitUsage.
int endOutput(int code);
