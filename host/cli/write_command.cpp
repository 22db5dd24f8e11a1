// SPDX-License-Identifier: MIT
#include "commands.h"
#include "common_options.h"
#include "standard_output.h"

#include "../explain/filled.h"
#include "../explain/writes.h"

#include "../../driver/api/codes.h"

#include <algorithm>
#include <cstdio>

using namespace modbus_driver;

namespace {

const char description[] = R"(Writes VARIABLE=VALUE[,VALUE...] once, in the given order, to coil, hrbit, hr or
hr32; unit 0 writes to all units (not hrbit). Values follow the type, order and
scale: decimal, 0x hexadecimal, text; without a type also negative, and for hr32
a fraction, which is sent as float. A bit of a register is written by reading the
register and writing it back: another master's change in between is lost.

Prints the station, then the outcome of each write. A write without a reply is
not sent again unless --retries says so, since it may have been carried out.

Example: a register, a bit of register 10 and a float, low register first:
  modbus-panel write --connect 192.0.2.7:502 hr:100=-5 hrbit:10.5=1 hr32:20:float:CDAB=21.5)";

const int longestText = 60; // of a word in the report

/// Why the variable cannot be written so; empty when it can.
QString whyUnwritable(const ListedVariable &named, int block)
{
    const int area = named.variable.area;
    if (area == AreaDiscreteInputs || area == AreaInputRegisterBit || area == AreaInputRegisters ||
        area == AreaInputPairs)
        return filled("%1 is read-only", areaName(area));
    if (named.variable.unit == StationBroadcast && area == AreaHoldingRegisterBit)
        return asText("a bit of a register cannot be broadcast: the register has to be read first");
    if (area == AreaHoldingPairs && block < 2)
        return asText("a 32-bit value needs a --block of at least 2");
    return asText(named.value.isNull() ? "it names no value; write takes VARIABLE=VALUE" : "");
}

/// The item to write; errors go to line->complain().
WriteItem itemOf(const ListedVariable &named, int block, CommandLine *line)
{
    WriteItem item;
    item.variable = named.variable;
    QString fault = whyUnwritable(named, block);
    if (!fault.isEmpty())
        fault = filled("%1: %2", named.variable.name, fault);
    else
        item.value = parseValues(named.variable, named.value, &fault).value_or(QByteArray());
    if (!fault.isEmpty())
        line->complain(named.place + fault);
    item.text = named.variable.name + QLatin1Char('=') + named.value;
    if (item.text.size() > longestText)
        item.text = item.text.left(longestText - 3) + QStringLiteral("...");
    return item;
}

int report(const QList<WriteItem> &items, PanelSnapshot now)
{
    const ExitCode codes[] = {ExitDone, ExitFailed, ExitOutcomeUnknown}; // by WriteOutcome::End, rising
    ExitCode worst = ExitDone;
    for (int i = 0; i < items.size(); ++i) {
        const WriteOutcome outcome = writeOutcome(items.at(i), now.items[i]);
        printLine(filled("%1: %2", items.at(i).text, outcome.text));
        worst = std::max(worst, codes[outcome.end]);
    }
    return worst;
}

} // namespace

int writeCommand(const QStringList &arguments)
{
    CommandLine line("write", "[OPTION]... VARIABLE=VALUE...", description);
    addLinkOptions(&line, "0");
    addFileOption(&line);
    if (const auto code = line.parse(arguments))
        return *code;
    PanelOptions options = linkOptions(&line);
    options.connection.patienceMs = options.connection.timeoutMs;
    if (!line.isSet("connect") && !line.isSet("simulate"))
        line.complain(
            "no station is named: --connect HOST:PORT writes to one, --simulate to a simulated one");
    QList<WriteItem> items;
    QList<Variable> variables;
    for (const ListedVariable &named : namedVariables(&line)) {
        items << itemOf(named, options.block, &line);
        variables << named.variable;
    }
    PanelSession session(options, variables);
    if (const ExitCode code = prepare(line, &session); code != ExitDone)
        return code;
    queueWrites(session.driver(), options.block, &items);
    const auto inQueue =
        std::count_if(items.begin(), items.end(), [](const WriteItem &item) { return item.queued > 0; });
    std::printf("%s\n", qPrintable(session.peer())); // not flushed: a reader that has stopped delays no write
    session.start();
    session.waitForItems(static_cast<int>(inQueue));
    session.stop();
    const PanelSnapshot last = session.state().snapshot();
    if (last.items.empty() && last.linkCause != LinkCause::None)
        return line.fail(ExitNoLink, "%1: %2", session.peer(), linkCauseText(last.linkCause));
    return report(items, last);
}
