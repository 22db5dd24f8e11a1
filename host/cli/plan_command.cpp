// SPDX-License-Identifier: MIT
#include "commands.h"
#include "common_options.h"
#include "standard_output.h"

#include "../explain/filled.h"
#include "../explain/plan.h"

namespace {

const char description[] = R"(Prints the requests that poll sends for these variables,
[UNIT/]AREA:ADDRESS[*COUNT], without touching a device: their bytes, the
variables that they carry, and the addresses in the gaps between them, which are
read too: a unit that lacks one refuses the whole request with exception 2.
Requests beyond a limit of the protocol are marked, with the block to use.

Example: two variables in one request, with a gap of six registers:
  modbus-panel plan hr:0*2 hr:8)";

} // namespace

int planCommand(const QStringList &arguments)
{
    CommandLine line("plan", "[OPTION]... VARIABLE...", description);
    line.addOption("block", "Most registers, or bytes of bits, in a request.", "N", "100");
    addFileOption(&line);
    addDriverOption(&line);
    if (const auto code = line.parse(arguments))
        return *code;
    const int block = line.number("block", 1, 1000);
    const QList<Variable> variables = variablesToRead(&line, false);
    if (!line.isFine())
        return line.fail();

    QString error;
    const auto driver = loadDriver(line.value("driver"), &error);
    if (!driver)
        return line.fail(ExitNoLink, error);
    const QList<PlannedRequest> requests = planRequests(*driver, variables, block);
    if (requests.isEmpty())
        return line.fail(ExitNoLink, "the driver does not give the requests that it announced");
    const QList<QList<Variable>> carried = carriedVariables(requests, variables);
    int sent = 0;
    int received = 0;
    int gaps = 0;
    for (int i = 0; i < requests.size(); ++i) {
        printLine(planLines(requests.at(i), carried.at(i)).join(QLatin1Char('\n')));
        sent += requests.at(i).frame.size();
        received += requests.at(i).replyLength;
        gaps += gapsOf(requests.at(i), carried.at(i)).size();
    }
    printLine(filled("%1, %2 sent and %3 received in each pass, %4", counted(requests.size(), "request"),
                     counted(sent, "byte"), counted(received, "byte"), counted(gaps, "gap")));
    return ExitDone;
}
