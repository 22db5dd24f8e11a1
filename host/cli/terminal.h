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

/// Uses the terminal's second screen while it lives, so that the previous content comes back: also when a signal stops
/// or ends the process.
class FullScreen
{
public:
    FullScreen() = default;
    ~FullScreen();
    FullScreen(const FullScreen &) = delete;
    FullScreen &operator=(const FullScreen &) = delete;

    ScreenSize size() const;
    /// Replaces the whole content, unless the terminal is another process's now. The lines must fit the size.
    void draw(const QStringList &lines);
    /// Waits for keys, no longer than `ms`. The key q does what Ctrl-C does.
    QList<Scroll> keys(int ms);

private:
    bool m_hasKeys = false; ///< stdin is a terminal, too
};
