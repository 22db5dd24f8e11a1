// SPDX-License-Identifier: MIT
/// \file
/// SIGINT, SIGTERM and SIGHUP as a flag that the main thread checks.

#pragma once

/// From now on SIGINT, SIGTERM and SIGHUP only set the flag.
void catchInterrupts();
bool isInterrupted();
