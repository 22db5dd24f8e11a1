// SPDX-License-Identifier: MIT
#include "commands.h"
#include "common_options.h"
#include "panel_text.h"
#include "records.h"
#include "standard_output.h"

#include "../explain/byte_orders.h"
#include "../explain/filled.h"

namespace {

const char description[] = R"(Reads variables, [UNIT/]AREA:ADDRESS[*COUNT], once. Each has a request of its
own, so a failure affects no other variable.

Prints the station, then VARIABLE = VALUE for each, or a line on stderr with the
reason.

Example: four registers and a bit of register 10, from unit 2:
  modbus-panel read --connect 192.0.2.7:502 2/hr:100*4 2/hrbit:10.5)";

/// Prints an error, or a value that comes in no record. True when there was a value.
bool report(const CommandLine &line, const ValueState &value, RecordForm form)
{
    const Variable &variable = value.variable();
    if (value.readAtMs() >= 0 && value.failure().isEmpty()) {
        if (form != RecordForm::None)
            return true; // it is in the record
        const bool inOrders = line.isSet("orders");
        const QString text = inOrders
                                 ? byteOrderTable(value.value(), variable.width()).join(QLatin1Char('\n'))
                                 : measuredText(variable, value.value());
        printLine(filled(inOrders ? "%1:\n%2" : "%1 = %2", variable.name, text));
        return true;
    }
    const QString why = value.failure().isEmpty() ? QStringLiteral("not read") : value.failure();
    line.fail(ExitFailed, "%1: %2", variable.name, why);
    return false;
}

} // namespace

int readCommand(const QStringList &arguments)
{
    CommandLine line("read", "[OPTION]... VARIABLE...", description);
    addLinkOptions(&line, "1");
    addReadOptions(&line);
    line.addOption("orders", "Show two registers in every byte order, to find the right one.");
    addRecordOptions(&line);
    if (const auto code = line.parse(arguments))
        return *code;
    PanelOptions options = linkOptions(&line);
    options.connection.patienceMs = options.connection.timeoutMs;
    const RecordForm form = recordFormOption(&line);
    const QList<Variable> variables = variablesToRead(&line, options.connection.remote, formatOption(&line));
    for (const Variable &variable : variables) {
        if (line.isSet("orders") && (variable.driverCount() != 2 || variable.width() == 1))
            line.complain("--orders takes two registers, such as hr:6*2, not %1", variable.name);
    }
    PanelSession session(options, variables);
    if (const ExitCode code = prepare(line, &session); code != ExitDone)
        return code;
    if (!session.readVariablesOnce())
        return line.fail(ExitUsage, "too many variables to read at once; poll takes any number");
    if (form == RecordForm::None)
        printLine(session.peer());
    session.start();
    bool isGood = true;
    const auto show = [&](int item, const PanelSnapshot &now) {
        isGood = report(line, now.values[static_cast<std::size_t>(item)], form) && isGood;
    };
    PanelSnapshot last = session.waitForItems(variables.size(), show);
    session.stop();
    if (last.isEnded)
        return line.fail(ExitNoLink, "%1: %2", session.peer(), linkCauseText(last.linkCause));
    for (int i = 0; i < variables.size(); ++i) {
        if (!last.items[i].isEnded)
            show(i, last);
    }
    if (form != RecordForm::None)
        print(recordHeading(form) +
              record(last, {form, session.address(), std::numeric_limits<qint64>::max()}));
    return isGood ? ExitDone : ExitFailed;
}
