// SPDX-License-Identifier: MIT
/// \file
/// A full screen of lines, redrawn in place by ANSI sequences, and the keys that move them. On the main thread.

#pragma once

#include <QtCore/QList>
#include <QtCore/QStringList>

struct ScreenSize
{
    int rows = 24;
    int columns = 80;
};

/// How far a key moves what is shown. Home and End go further than any text is long.
struct Scroll
{
    int lines = 0;
    int pages = 0;
};

ScreenSize screenSize();
/// Replaces the whole content of the terminal's second screen, unless the terminal is another process's now. The lines
/// must fit the size. leaveTerminal() brings the previous content back, and so does a signal that stops or ends the
/// process.
void drawScreen(const QStringList &lines);
/// Waits for keys, no longer than `ms`. The key q does what Ctrl-C does.
QList<Scroll> screenKeys(int ms);
