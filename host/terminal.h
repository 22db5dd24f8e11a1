// SPDX-License-Identifier: MIT
/// \file
/// A screenful of lines redrawn in place by ANSI sequences. On the main thread.

#pragma once

#include <QtCore/QStringList>

/// True when stdout is a terminal.
bool isTerminal();

/// Takes the terminal's second screen while it lives, so that what stood there before comes back.
class FullScreen
{
public:
    FullScreen();
    ~FullScreen();
    FullScreen(const FullScreen &) = delete;
    FullScreen &operator=(const FullScreen &) = delete;

    /// Replaces all that is shown; what does not fit the terminal is cut off.
    void draw(const QStringList &lines);
};
