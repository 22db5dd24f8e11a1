// SPDX-License-Identifier: MIT
/// \file
/// The options that every command with a link has, and the checks that its variables must pass. On the main
/// thread.

#pragma once

#include "command_line.h"
#include "panel_session.h"

#include "../explain/value_text.h"
#include "../explain/variable_list.h"

/// With the defaults of --retries, --gap and --block.
void addLinkOptions(CommandLine *line, const char *retries, const char *gap = "0", const char *block = "100");
/// Reads them; errors go to line->complain().
PanelOptions linkOptions(CommandLine *line);

/// Prepares the session and catches interrupts, once the whole command line is read. Prints what is wrong with that or
/// with the session; then the code is not ExitDone.
ExitCode prepare(const CommandLine &line, PanelSession *session);

void addDriverOption(CommandLine *line);
/// --file and --base, and how variables are written at the end of the description.
void addFileOption(CommandLine *line);
/// --file, --base and --format.
void addReadOptions(CommandLine *line);
/// The type of variables that name none.
ValueType formatOption(CommandLine *line);

/// The variables of the words and of --file, at least one. Errors go to line->complain().
QList<ListedVariable> namedVariables(CommandLine *line);
/// The same for commands that read, with `format` where it fits and none is named. Errors go to
/// line->complain().
QList<Variable> variablesToRead(CommandLine *line, bool remote, ValueType format = ValueType::Plain);
