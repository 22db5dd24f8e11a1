// SPDX-License-Identifier: MIT
// modbus-panel: a panel on the command line. The first word names the command.
#include "commands.h"
#include "exit_codes.h"
#include "printable.h"
#include "standard_output.h"

#include "../explain/filled.h"

#include <QtCore/QCoreApplication>

#include <cstdio>

namespace {

struct Command
{
    const char *name;
    int (*run)(const QStringList &arguments);
    const char *summary;
};

const Command commands[] = {
    {"poll", pollCommand, "poll variables and show values, ages and counts of each unit"},
    {"read", readCommand, "read variables once"},
    {"write", writeCommand, "write variables once and tell the outcome of each"},
    {"scan", scanCommand, "find out which units or registers answer"},
    {"plan", planCommand, "print the requests that variables become; touches no device"},
    {"decode", decodeCommand, "explain a frame field by field"},
    {"status", statusCommand, "explain a status code of the driver"},
};

void printHelp()
{
    std::printf("Usage: modbus-panel COMMAND [OPTION]... [WORD]...\n"
                "A host for the Modbus TCP driver, for commissioning and as an example.\n\nCommands:\n");
    for (const Command &command : commands)
        std::printf("  %-8s%s\n", command.name, command.summary);
    std::printf(
        "\nmodbus-panel COMMAND --help explains each. poll, read and scan without --connect ask a simulated\n"
        "station that runs inside; write does so with --simulate only.\n"
        "Exit codes: 0 done, 1 a station refused or did not answer, 2 wrong usage, 3 no connection or no\n"
        "driver, 4 the outcome of a write is unknown.\n"
        "\nExample:\n  modbus-panel poll --simulate hr:0*4 coil:0*8\n");
}

int run(const QStringList &words)
{
    const QString name = words.value(0);
    if (name == QLatin1String("--help") || name == QLatin1String("-h")) {
        printHelp();
        return ExitDone;
    }
    if (name == QLatin1String("--version") || name == QLatin1String("-v")) {
        std::puts("modbus-panel " MODBUS_VERSION);
        return ExitDone;
    }
    for (const Command &command : commands) {
        if (name == QLatin1String(command.name))
            return command.run(words.mid(1));
    }
    const QString fault = name.isEmpty() ? asText("no command is named")
                                         : filled("no command is called \"%1\"", printable(name));
    std::fprintf(stderr, "modbus-panel: %s; modbus-panel --help lists them\n", qPrintable(fault));
    return ExitUsage;
}

} // namespace

int main(int argc, char *argv[])
{
    guardStandardStreams();
    QCoreApplication application(argc, argv);
    return endOutput(run(QCoreApplication::arguments().mid(1)));
}
