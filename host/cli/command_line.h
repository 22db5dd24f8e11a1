// SPDX-License-Identifier: MIT
/// \file
/// The command line of one command: its own options and help, and one line about the first error. On the main thread.

#pragma once

#include "exit_codes.h"

#include "../explain/filled.h"

#include <QtCore/QCommandLineParser>

#include <optional>

class CommandLine
{
public:
    /// `synopsis` is what follows the command in the usage line; `description` ends with an example.
    CommandLine(const char *command, const char *synopsis, const char *description);

    /// For the end of the description.
    void describe(const char *more);

    /// An option without a value name takes no value. With one such as "[FILE]" it may stand alone; its value, only as
    /// --name=VALUE, is then empty.
    void addOption(const char *name, const char *description, const char *valueName = nullptr,
                   const char *defaultValue = nullptr);

    /// Reads the words after the command. Returns an exit code when the command must end at once: the help was asked
    /// for, or an option is unknown.
    std::optional<ExitCode> parse(const QStringList &arguments);

    bool isSet(const char *name) const { return m_parser.isSet(QLatin1String(name)); }
    int optionCount() const { return m_parser.optionNames().size(); }
    QString value(const char *name) const { return m_parser.value(QLatin1String(name)); }
    QStringList values(const char *name) const { return m_parser.values(QLatin1String(name)); }
    QStringList words() const { return m_parser.positionalArguments(); }
    /// The value as a number. An error when it is outside the limits; the nearest limit is then returned.
    int number(const char *name, int lowest, int highest);

    /// Notes an error, a format and its arguments; only the first is kept. None is an empty text.
    template <typename... Texts> void complain(const Texts &...texts)
    {
        if (isFine())
            m_complaint = filled(texts...);
    }
    bool isFine() const { return m_complaint.isEmpty(); }
    /// Prints the error.
    ExitCode fail() const { return fail(ExitUsage, m_complaint); }
    /// Prints one line on stderr, a format and its arguments, and returns the code.
    template <typename... Texts> ExitCode fail(ExitCode code, const Texts &...texts) const
    {
        printError(filled(texts...));
        return code;
    }

private:
    void printError(const QString &line) const;

    QString m_command;
    QString m_synopsis;
    QCommandLineParser m_parser;
    QStringList m_optional; ///< such as "--trace"
    QString m_complaint;
};
