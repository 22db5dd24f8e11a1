// SPDX-License-Identifier: MIT
#include "commands.h"
#include "common_options.h"
#include "interrupt.h"
#include "poll_table.h"
#include "records.h"
#include "standard_output.h"

#include "../explain/filled.h"

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace {

const char description[] = R"(Polls variables, [UNIT/]AREA:ADDRESS[*COUNT], and shows each value with its age
and state, and a line of counts for each unit: in place on a terminal, where the
arrows, PgUp, PgDn, Home and End show more variables; otherwise, and with
--json or --csv, after every pass. Ctrl-C, or q in the table, ends it.

A lost link is opened again at once the first time, then after 1 s, 2 s, 4 s...
up to 60 s; meanwhile all requests fail at once.

Example: two units, each pass a second after the one before, ten passes:
  modbus-panel poll --connect 192.0.2.7:502 --passes 10 1/hr:100*4 2/coil:0*8)";

const int redrawMs = 250; // ages change between the passes

void addPollOptions(CommandLine *line)
{
    addLinkOptions(line, "1");
    addReadOptions(line);
    line->addOption("every", "Milliseconds from pass to pass; 0: at once.", "MS", "1000");
    line->addOption("passes", "End after so many passes; 0: go on.", "N", "0");
    line->addOption("wait", "Wait for a station that is not up yet, instead of ending.");
    addRecordOptions(line);
    line->addOption("off-after",
                    "Switch a unit off after so many unanswered requests in a row, each given up "
                    "after its retries; 0: never.",
                    "N", "3");
    line->addOption("retry-off", "Seconds after which a unit that is off is tried again.", "SECONDS", "10");
}

LoopOptions loopOptions(CommandLine *line)
{
    LoopOptions options;
    options.everyMs = line->number("every", 0, 3600000);
    options.passes = line->number("passes", 0, 1000000000);
    options.waitsForLink = line->isSet("wait");
    options.offAfter = line->number("off-after", 0, 1000000);
    options.retryOffMs = 1000 * line->number("retry-off", 1, 86400);
    return options;
}

void print(PollTable *table, const PanelSnapshot &now)
{
    printLine(table->lines(now).join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

/// Ended by the communication, by a signal or by a failed output.
bool mustEnd(const PanelSnapshot &now)
{
    return now.isEnded || isInterrupted() || std::ferror(stdout);
}

/// The last snapshot.
PanelSnapshot showInPlace(PollTable *table, const PanelState &state)
{
    PanelSnapshot now = state.snapshot();
    while (!mustEnd(now)) {
        drawScreen(table->screen(now, screenSize()));
        for (const Scroll &scroll : screenKeys(redrawMs))
            table->scroll(scroll);
        now = state.snapshot();
    }
    leaveTerminal();
    return now;
}

/// After a signal in the first pass, what was read so far. The last snapshot.
PanelSnapshot showEachPass(PollTable *table, const PanelState &state, const RecordOptions &options)
{
    const auto show = [&](const PanelSnapshot &now) {
        options.form == RecordForm::None ? print(table, now) : print(record(now, options));
    };
    print(recordHeading(options.form));
    PanelSnapshot now = state.snapshot();
    while (!mustEnd(now)) {
        const int passes = now.passes;
        state.waitForNews(passes, 0, redrawMs);
        now = state.snapshot();
        if (now.passes > passes)
            show(now);
    }
    if (now.passes == 0 && isInterrupted())
        show(now);
    return now;
}

bool isGood(const PanelSnapshot &now)
{
    return std::all_of(now.values.begin(), now.values.end(), [](const ValueState &value) {
        return value.readAtMs() >= 0 && value.failure().isEmpty();
    });
}

} // namespace

int pollCommand(const QStringList &arguments)
{
    CommandLine line("poll", "[OPTION]... VARIABLE...", description);
    addPollOptions(&line);
    if (const auto code = line.parse(arguments))
        return *code;
    PanelOptions options = linkOptions(&line);
    options.loop = loopOptions(&line);
    const RecordForm form = recordFormOption(&line);
    const QList<Variable> variables = variablesToRead(&line, options.connection.remote, formatOption(&line));
    PanelSession session(options, variables);
    if (const ExitCode code = prepare(line, &session); code != ExitDone)
        return code;
    session.pollVariables();
    const bool traceOnScreen = options.trace && options.traceFile.isEmpty();
    const bool inPlace = isatty(STDOUT_FILENO) == 1 && form == RecordForm::None && !traceOnScreen;
    session.state().waitAtPasses(!inPlace);
    session.start();
    const qint64 freshForMs = 2 * options.loop.everyMs + options.connection.timeoutMs;
    PollTable table(session.peer(), freshForMs);
    const PanelSnapshot last =
        inPlace ? showInPlace(&table, session.state())
                : showEachPass(&table, session.state(), {form, session.address(), freshForMs});
    session.stop();
    if (last.passes == 0 && last.isEnded) {
        if (form == RecordForm::None)
            printLine(session.peer());
        return line.fail(ExitNoLink, "%1: %2", session.peer(), linkCauseText(last.linkCause));
    }
    if (inPlace)
        print(&table, last);
    return isInterrupted() || std::ferror(stdout) || isGood(last) ? ExitDone : ExitFailed;
}
