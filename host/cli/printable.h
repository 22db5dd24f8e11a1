// SPDX-License-Identifier: MIT
/// \file
/// Text from outside (arguments, files, names) on its way to a terminal.

#pragma once

#include <QtCore/QString>

/// The text with "?" for every control character: a terminal would take these for commands.
inline QString printable(QString text)
{
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control)
            character = QLatin1Char('?');
    }
    return text;
}
