// SPDX-License-Identifier: MIT
/// \file
/// The options that every command with a link has, and the checks that its variables must pass. On the main
/// thread.

#pragma once

#include "command_line.h"
#include "panel_session.h"
#include "value_text.h"

/// `retries` is the default of --retries.
void addLinkOptions(CommandLine *line, const char *retries);
/// Reads them; what is wrong is a complaint of the line.
PanelOptions linkOptions(CommandLine *line);

void addDriverOption(CommandLine *line);
void addFileOption(CommandLine *line);
/// --file and --format.
void addReadOptions(CommandLine *line);
ValueFormat formatOption(CommandLine *line);

/// The variables of the words and of --file. What is wrong is a complaint of the line.
QList<Variable> variablesToRead(CommandLine *line, bool remote);
