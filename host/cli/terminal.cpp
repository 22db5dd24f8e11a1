// SPDX-License-Identifier: MIT
#include "terminal.h"

#include "interrupt.h"
#include "standard_output.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

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

const Key keyTable[] = {
    {"\x1b[A", {-1, 0}},       {"\x1bOA", {-1, 0}},       {"\x1b[B", {1, 0}},
    {"\x1bOB", {1, 0}},        {"\x1b[5~", {0, -1}},      {"\x1b[6~", {0, 1}},
    {"\x1b[H", {-farAway, 0}}, {"\x1bOH", {-farAway, 0}}, {"\x1b[1~", {-farAway, 0}},
    {"\x1b[F", {farAway, 0}},  {"\x1bOF", {farAway, 0}},  {"\x1b[4~", {farAway, 0}},
};

QList<Scroll> scrollsOf(QByteArray typed)
{
    QList<Scroll> scrolls;
    while (!typed.isEmpty()) {
        const auto isTyped = [&](const Key &key) { return typed.startsWith(key.bytes); };
        const Key *key = std::find_if(std::begin(keyTable), std::end(keyTable), isTyped);
        const bool isKnown = key != std::end(keyTable);
        if (isKnown)
            scrolls << key->scroll;
        else if (typed.startsWith('q'))
            std::raise(SIGINT);
        typed.remove(0, isKnown ? static_cast<int>(std::strlen(key->bytes)) : 1);
    }
    return scrolls;
}

} // namespace

FullScreen::~FullScreen()
{
    leaveTerminal();
}

ScreenSize FullScreen::size() const
{
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0)
        return {};
    return {size.ws_row, size.ws_col};
}

void FullScreen::draw(const QStringList &lines)
{
    if (isInBackground())
        return;
    if (!isTerminalEntered())
        m_hasKeys = enterTerminal();
    QStringList screen = lines;
    while (screen.size() < size().rows)
        screen << QString();
    print("\x1b[H\x1b[K" + screen.join(QStringLiteral("\r\n\x1b[K")).toLocal8Bit()); // from the top left
}

QList<Scroll> FullScreen::keys(int ms)
{
    pollfd input = {m_hasKeys && !isInBackground() ? STDIN_FILENO : -1, POLLIN, 0};
    if (poll(&input, 1, ms) != 1)
        return {};
    char bytes[256];
    const ssize_t size = read(STDIN_FILENO, bytes, sizeof bytes);
    m_hasKeys = size > 0 || errno == EINTR; // else the terminal has gone
    return scrollsOf(QByteArray(bytes, static_cast<int>(qMax<ssize_t>(size, 0))));
}
