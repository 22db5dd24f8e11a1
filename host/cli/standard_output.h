// SPDX-License-Identifier: MIT
/// \file
/// Standard output and standard error that are closed, full, or no longer read. On the main thread.

#pragma once

#include <QtCore/QString>

/// Called before anything else is opened. Opens /dev/null for a closed standard stream: otherwise a socket could get
/// its number, and printed text would go to the station. SIGPIPE no longer ends the process.
void guardStandardStreams();

/// Writes the text at once: its reader sees it before anything that comes later.
void print(const QByteArray &text);
/// The same with a line end.
void printLine(const QString &text);

/// Some output other than stdout was lost; endOutput tells so. `what` is a name such as "the trace".
void noteLostOutput(const char *what);

/// Flushes, and returns the exit code: `code`, also when the reader of a pipe has left or a signal ended the command.
/// When output was lost for another reason, a line on stderr says so, and ExitDone becomes ExitUsage.
int endOutput(int code);
