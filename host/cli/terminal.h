// SPDX-License-Identifier: MIT
/// \file
/// A full screen of lines, redrawn in place by ANSI sequences. On the main thread.

#pragma once

#include <QtCore/QStringList>

/// True when stdout is a terminal.
bool isTerminal();

/// Uses the terminal's second screen while it lives, so that the previous content comes back: also when a signal stops
/// or ends the process.
class FullScreen
{
public:
    FullScreen();
    ~FullScreen();
    FullScreen(const FullScreen &) = delete;
    FullScreen &operator=(const FullScreen &) = delete;

    /// Replaces the whole content; lines that do not fit the terminal are cut off.
    void draw(const QStringList &lines);
};
