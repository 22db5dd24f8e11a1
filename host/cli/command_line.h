// SPDX-License-Identifier: MIT
/// \file
/// The command line of one command: its own options and help, and one line about the first error. On the main thread.

#pragma once

#include "exit_codes.h"

#include <QtCore/QCommandLineParser>

#include <optional>

class CommandLine
{
public:
    /// `synopsis` is what follows the command in the usage line; `description` ends with an example.
    CommandLine(const QString &command, const QString &synopsis, const QString &description);

    /// An option without a value name takes no value. With one such as "[FILE]" it may stand alone; its value, only as
    /// --name=VALUE, is then empty.
    void addOption(const char *name, const QString &description, const char *valueName = nullptr,
                   const char *defaultValue = nullptr);

    /// Reads the words after the command. Returns an exit code when the command must end at once: the help was asked
    /// for, or an option is unknown.
    std::optional<ExitCode> parse(const QStringList &arguments);

    bool isSet(const char *name) const { return m_parser.isSet(QLatin1String(name)); }
    QString value(const char *name) const { return m_parser.value(QLatin1String(name)); }
    QStringList values(const char *name) const { return m_parser.values(QLatin1String(name)); }
    QStringList words() const { return m_parser.positionalArguments(); }
    /// The value as a number. An error when it is outside the limits; the nearest limit is then returned.
    int number(const char *name, int lowest, int highest);

    /// Notes an error; only the first is kept.
    void complain(const QString &complaint);
    bool isFine() const { return m_complaint.isEmpty(); }
    /// Prints the error.
    ExitCode fail() const { return fail(ExitUsage, m_complaint); }
    /// Prints one line on stderr and returns the code.
    ExitCode fail(ExitCode code, const QString &line) const;

private:
    QString m_command;
    QString m_synopsis;
    QCommandLineParser m_parser;
    QStringList m_optional; ///< such as "--trace"
    QString m_complaint;
};
