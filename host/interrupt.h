// SPDX-License-Identifier: MIT
/// \file
/// Ctrl-C, and the other ways of asking a program to end, as a flag that the main thread looks at.

#pragma once

/// From now on SIGINT, SIGTERM and SIGHUP only set the flag.
void catchInterrupts();
bool isInterrupted();
