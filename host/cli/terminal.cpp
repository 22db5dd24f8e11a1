// SPDX-License-Identifier: MIT
#include "terminal.h"

#include "interrupt.h"

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

const char enterScreen[] = "\x1b[?1049h\x1b[?25l"; // second screen, no cursor
const char leaveScreen[] = "\x1b[?25h\x1b[?1049l";

void print(const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
}

struct Size
{
    int rows = 24;
    int columns = 80;
};

Size terminalSize()
{
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0)
        return {};
    return {size.ws_row, size.ws_col};
}

} // namespace

bool isTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

FullScreen::FullScreen()
{
    enterTerminal(enterScreen, leaveScreen);
    print(QLatin1String(enterScreen));
}

FullScreen::~FullScreen()
{
    print(QLatin1String(leaveScreen));
    leaveTerminal();
}

void FullScreen::draw(const QStringList &lines)
{
    const Size size = terminalSize();
    QString text = QStringLiteral("\x1b[H"); // top left
    for (int i = 0; i < qMin(lines.size(), size.rows); ++i) {
        text += lines.at(i).left(size.columns) + QStringLiteral("\x1b[K"); // rest of the line empty
        if (i + 1 < size.rows)
            text += QStringLiteral("\r\n");
    }
    print(text + QStringLiteral("\x1b[J")); // rest of the screen empty
}
