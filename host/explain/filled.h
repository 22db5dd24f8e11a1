// SPDX-License-Identifier: MIT
/// \file
/// Texts with places for numbers and other texts. Pure; any thread.

#pragma once

#include <QtCore/QString>

inline QString asText(const QString &text)
{
    return text;
}
inline QString asText(const char *text)
{
    return QString::fromLatin1(text);
}
inline QString asText(int number)
{
    return QString::number(number);
}

/// The format with the arguments in place of %1, %2 and so on, none left out. A % in an argument stays as it is.
template <typename Format, typename... Arguments>
QString filled(const Format &format, const Arguments &...arguments)
{
    const QString text = asText(format);
    if constexpr (sizeof...(arguments) > 0)
        return text.arg(asText(arguments)...);
    return text;
}

/// "1 byte", "2 bytes".
inline QString counted(int count, const char *noun)
{
    return filled(count == 1 ? "%1 %2" : "%1 %2s", count, noun);
}

/// "5", "5-8".
inline QString range(int first, int count)
{
    return count == 1 ? asText(first) : filled("%1-%2", first, first + count - 1);
}
