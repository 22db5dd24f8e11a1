// SPDX-License-Identifier: MIT
#include "terminal.h"

#include "interrupt.h"
#include "standard_output.h"

#include <cerrno>
#include <csignal>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

const int farAway = 1000000; // lines

struct Key
{
    const char *bytes;
    Scroll scroll;
};

/// Some terminals send O instead of [.
const Key keyTable[] = {
    {"\x1b[A", {-1, 0}},      {"\x1b[B", {1, 0}},        {"\x1b[5~", {0, -1}},
    {"\x1b[6~", {0, 1}},      {"\x1b[H", {-farAway, 0}}, {"\x1b[1~", {-farAway, 0}},
    {"\x1b[F", {farAway, 0}}, {"\x1b[4~", {farAway, 0}},
};

bool hasKeys = isatty(STDIN_FILENO) == 1; // stdin is a terminal, too

} // namespace

ScreenSize screenSize()
{
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0)
        return {};
    return {size.ws_row, size.ws_col};
}

void drawScreen(const QStringList &lines)
{
    if (isInBackground())
        return;
    enterTerminal();
    QStringList screen = lines;
    while (screen.size() < screenSize().rows)
        screen << QString();
    print("\x1b[H\x1b[K" + screen.join(QStringLiteral("\r\n\x1b[K")).toLocal8Bit()); // from the top left
}

QList<Scroll> screenKeys(int ms)
{
    pollfd input = {hasKeys && !isInBackground() ? STDIN_FILENO : -1, POLLIN, 0};
    if (poll(&input, 1, ms) != 1)
        return {};
    char bytes[256];
    const ssize_t size = read(STDIN_FILENO, bytes, sizeof bytes);
    hasKeys = size > 0 || errno == EINTR; // else the terminal has gone
    QByteArray typed(bytes, static_cast<int>(qMax<ssize_t>(size, 0)));
    typed.replace("\x1bO", "\x1b[");
    QList<Scroll> scrolls;
    for (int i = 0; i < typed.size(); ++i) {
        for (const Key &key : keyTable) {
            if (typed.mid(i).startsWith(key.bytes))
                scrolls << key.scroll;
        }
        if (typed.at(i) == 'q')
            std::raise(SIGINT);
    }
    return scrolls;
}
