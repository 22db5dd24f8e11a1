// SPDX-License-Identifier: MIT
// A fuzz input read as a script: every target takes its calls, numbers and texts from the front, and gets
// zeros past the end. And the one way in which a target fails.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstdio>
#include <cstdlib>
#include <limits>

/// Ends the process, with one line that says what was broken, unless `broken` is null.
inline void requireNothing(const char *broken)
{
    if (!broken)
        return;
    std::fprintf(stderr, "broken promise: %s\n", broken);
    std::abort();
}

inline void require(bool holds, const char *promise)
{
    requireNothing(holds ? nullptr : promise);
}

class Script
{
public:
    Script(const quint8 *bytes, std::size_t size) : m_at(bytes), m_end(bytes + size) {}

    bool atEnd() const { return m_at == m_end; }
    int byte() { return atEnd() ? 0 : *m_at++; }
    bool flag() { return byte() & 1; }

    /// Mostly 0 to 239; sometimes one of the numbers at which tables and integers end, or any number.
    int number()
    {
        const int corners[] = {-1,
                               -9,
                               -16,
                               255,
                               256,
                               1024,
                               65528,
                               65535,
                               65536,
                               65543,
                               65544,
                               1 << 20,
                               std::numeric_limits<int>::min(),
                               std::numeric_limits<int>::max()};
        const int first = byte();
        if (first < 240)
            return first;
        if (first < 254)
            return corners[first - 240];
        quint32 any = 0;
        for (int i = 0; i < 4; ++i)
            any = any << 8 | static_cast<quint32>(byte());
        return static_cast<int>(any);
    }

    QByteArray bytes(int size)
    {
        const int taken = static_cast<int>(qMin<std::ptrdiff_t>(size, m_end - m_at));
        const QByteArray read(reinterpret_cast<const char *>(m_at), taken);
        m_at += taken;
        return read;
    }

    QByteArray rest() { return bytes(std::numeric_limits<int>::max()); }

    /// "12", "12.5" or anything.
    QString addressText()
    {
        const int form = byte() % 8;
        if (form == 0)
            return QString::fromLatin1(bytes(byte() % 12));
        const QString address = QString::number(number());
        return form < 5 ? address : QString::fromLatin1("%1.%2").arg(address).arg(number());
    }

private:
    const quint8 *m_at;
    const quint8 *const m_end;
};
