// SPDX-License-Identifier: MIT
#include "commands.h"

#include "command_line.h"
#include "standard_output.h"

#include "../explain/filled.h"
#include "../explain/status_text.h"

namespace {

const char description[] = R"(Explains status codes of the driver, which stand in the record that DataCom
returns: the class of the code, the hostId that is added to it, usual cause and
cure. Without a code, all classes are listed.

Example:
  modbus-panel status 74)";

} // namespace

int statusCommand(const QStringList &arguments)
{
    CommandLine line("status", "[CODE...]", description);
    if (const auto code = line.parse(arguments))
        return *code;
    if (line.words().isEmpty())
        printLine(statusTable().join(QLatin1Char('\n')));
    for (const QString &word : line.words()) {
        bool isNumber = false;
        const QStringList explanation = statusExplanation(word.toInt(&isNumber));
        if (!isNumber || explanation.isEmpty())
            return line.fail(ExitUsage,
                             "\"%1\" is no status code of the driver; without a code, all are listed", word);
        printLine(explanation.join(QLatin1Char('\n')));
    }
    return ExitDone;
}
