// SPDX-License-Identifier: MIT
#include "command_line.h"

#include "printable.h"

#include <cstdio>

CommandLine::CommandLine(const char *command, const char *synopsis, const char *description)
    : m_command(asText(command)), m_synopsis(asText(synopsis))
{
    describe(description);
    m_parser.addOption({{asText("h"), asText("help")}, asText("Print this and end.")});
}

void CommandLine::describe(const char *more)
{
    m_parser.setApplicationDescription(m_parser.applicationDescription() + asText(more));
}

void CommandLine::addOption(const char *name, const char *description, const char *valueName,
                            const char *defaultValue)
{
    QCommandLineOption option(asText(name), asText(description), asText(valueName), asText(defaultValue));
    if (defaultValue)
        option.setDescription(filled("%1 Default: %2.", description, defaultValue));
    if (valueName && *valueName == '[')
        m_optional << asText("--") + asText(name);
    m_parser.addOption(option);
}

std::optional<ExitCode> CommandLine::parse(const QStringList &arguments)
{
    QStringList words(m_command);
    for (const QString &word : arguments)
        words << (m_optional.contains(word) ? word + QLatin1Char('=') : word);
    if (!m_parser.parse(words))
        return fail(ExitUsage, "%1 --help lists the options.", m_parser.errorText());
    if (!isSet("help"))
        return std::nullopt;
    // The parser's help names only the program in its first line, and shows no optional values.
    QString text = m_parser.helpText();
    text.replace(QLatin1String(" <["), QLatin1String("[="))
        .replace(QLatin1String("]>"), QLatin1String("]  "));
    std::printf("Usage: modbus-panel %s %s\n%s", qPrintable(m_command), qPrintable(m_synopsis),
                qPrintable(text.mid(text.indexOf(QLatin1Char('\n')) + 1)));
    return ExitDone;
}

int CommandLine::number(const char *name, int lowest, int highest)
{
    bool ok = false;
    const int number = value(name).toInt(&ok);
    if (!ok || number < lowest || number > highest)
        complain("--%1 takes a number from %2 to %3, not \"%4\"", name, lowest, highest, value(name));
    return qBound(lowest, number, highest);
}

void CommandLine::printError(const QString &line) const
{
    std::fflush(stdout); // what was printed before stands before
    std::fprintf(stderr, "modbus-panel %s: %s\n", qPrintable(m_command), qPrintable(printable(line)));
}
