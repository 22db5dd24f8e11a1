// SPDX-License-Identifier: MIT
/// \file
/// What the host's tests write as one would type it: variables, frames in hexadecimal. Any thread.

#pragma once

#include "../host/explain/variable.h"

#include <gtest/gtest.h>

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

inline QByteArray bytes(const char *hex)
{
    return QByteArray::fromHex(hex);
}

/// Separated by blanks.
inline QStringList words(const QByteArray &text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

inline Variable variable(const QString &text)
{
    QString error;
    const std::optional<Variable> parsed = parseVariable(text, &error);
    EXPECT_TRUE(parsed) << qPrintable(error);
    return parsed.value_or(Variable());
}

inline QList<Variable> variables(const char *texts)
{
    QList<Variable> all;
    for (const QString &text : words(texts))
        all << variable(text);
    return all;
}
