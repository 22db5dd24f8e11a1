// SPDX-License-Identifier: MIT
#include "common_options.h"

#include "interrupt.h"

#include "../explain/filled.h"

#include "../../driver/api/codes.h"

#include <QtCore/QRegularExpression>

using namespace modbus_driver;

namespace {

const char areasHelp[] = R"(

A variable is [UNIT/]AREA:ADDRESS[*COUNT][:TYPE[:ORDER]], unit 1 when left out.
Addresses count from 0 unless --base 1.
  coil    coils                             coil:17
  input   discrete inputs                   input:5*8
  hr      holding registers                 2/hr:100*4
  ir      input registers                   ir:8:s16
  hr32    pairs of holding registers        hr32:6:float:CDAB
  ir32    pairs of input registers          ir32:20*3
  hrbit   bits of holding registers         hrbit:10.5
  irbit   bits of input registers           irbit:3.0*16
Types: hr, ir: u16, s16, hex, text; hr32, ir32: u32, s32, float, hex; bits none.
Orders of bytes: AB, BA for 16 bits and text; ABCD, CDAB, BADC, DCBA for 32.)";

const int longestMs = 3600000;
const int longestQuietMs = 10000;

/// HOST:PORT, [IPV6]:PORT or HOST; the port is 502 when it is left out.
void readPeer(CommandLine *line, ConnectionOptions *connection)
{
    static const QRegularExpression form(QStringLiteral("^(\\[(.+)\\]|([^:]+))(:(\\d+))?$"));
    const auto peer = form.match(line->value("connect"));
    connection->host = peer.captured(2) + peer.captured(3);
    connection->port = peer.captured(5).isNull() ? 502 : peer.captured(5).toUShort();
    if (!peer.hasMatch() || connection->port == 0)
        line->complain("--connect takes HOST:PORT, not \"%1\"", line->value("connect"));
}

/// The place of the option's value among the choices, such as "a, b or c"; an error, and 0, when it is none.
int choice(CommandLine *line, const char *option, const char *choices)
{
    static const QRegularExpression between(QStringLiteral(", | or "));
    const int place = asText(choices).split(between).indexOf(line->value(option));
    if (place < 0)
        line->complain("--%1 takes %2, not \"%3\"", option, choices, line->value(option));
    return qMax(0, place);
}

/// Why the variable cannot be read; empty when it can.
QString whyUnreadable(const Variable &variable, bool remote)
{
    if (variable.unit == StationBroadcast)
        return QStringLiteral("unit 0 is broadcast and sends no reply: it cannot be read");
    if (remote && !isBitArea(variable.area))
        return QStringLiteral("with --remote only coil and input are read: the driver sends no other reads");
    return QString();
}

/// Whether the variable names no type and this one can show it.
bool suits(ValueType format, const Variable &variable)
{
    const bool isOfWidth = format == ValueType::Float ? variable.width() == 4 : variable.width() > 1;
    const bool isScalable = format != ValueType::Hexadecimal || variable.scale == 1;
    return variable.type == ValueType::Plain && isOfWidth && isScalable;
}

} // namespace

void addLinkOptions(CommandLine *line, const char *retries, const char *gap, const char *block)
{
    line->addOption("connect", "The station; port 502 when left out.", "HOST:PORT");
    line->addOption("simulate", "A simulated station inside, with every unit that is asked.");
    line->addOption("timeout", "Milliseconds to wait for a connection or a reply.", "MS", "1000");
    line->addOption("retries", "How often a request without a good reply is sent again.", "N", retries);
    line->addOption(
        "after-timeout",
        "numbers: the connection is kept, if the station echoes transaction numbers. reconnect: it "
        "is opened anew. drain (serial gateways): all that comes late is read and thrown away.",
        "POLICY", "numbers");
    line->addOption(
        "quiet", "Milliseconds to listen for late replies of a station that echoes no transaction numbers.",
        "MS", "20");
    line->addOption("gap", "Milliseconds between a reply and the next request.", "MS", gap);
    line->addOption("block", "Most registers, or bytes of bits, in a request.", "N", block);
    line->addOption("trace", "Print each frame, on stderr or into a file, for Wireshark's text import.",
                    "[FILE]");
    line->addOption("remote", "The driver's own compact frames instead of Modbus.");
    addDriverOption(line);
    line->addOption("fault", "A fault of the simulated station, see modbus-station; repeatable.", "FAULT");
}

PanelOptions linkOptions(CommandLine *line)
{
    PanelOptions options;
    options.driverPath = line->value("driver");
    if (line->isSet("connect"))
        readPeer(line, &options.connection);
    if (line->isSet("connect") && line->isSet("simulate"))
        line->complain("--connect and --simulate name two stations");
    options.connection.timeoutMs = line->number("timeout", 1, longestMs);
    options.connection.gapMs = line->number("gap", 0, longestMs);
    options.connection.quietMs = line->number("quiet", 0, longestQuietMs);
    options.connection.remote = line->isSet("remote");
    options.connection.afterTimeout =
        static_cast<AfterTimeout>(choice(line, "after-timeout", "numbers, reconnect or drain"));
    options.retries = line->number("retries", 0, 100);
    options.block = line->number("block", 1, 1000);
    options.trace = line->isSet("trace");
    options.traceFile = line->value("trace");
    QString error;
    options.faults = parseFaults(line->values("fault"), &error).value_or(QList<Fault>());
    line->complain(error);
    if (line->isSet("fault") && line->isSet("connect"))
        line->complain("--fault is for the built-in station, not for one behind --connect");
    return options;
}

ExitCode prepare(const CommandLine &line, PanelSession *session)
{
    if (!line.isFine())
        return line.fail();
    QString error;
    if (const ExitCode code = session->prepare(&error); code != ExitDone)
        return line.fail(code, error);
    catchInterrupts();
    if (!line.isSet("connect") && !line.isSet("simulate")) // lest someone takes the values for real ones
        return line.fail(ExitDone, "no --connect: the values are those of a simulated station");
    return ExitDone;
}

void addDriverOption(CommandLine *line)
{
    line->addOption("driver", "The driver's library. Default: $MODBUS_DRIVER, else the installed one.",
                    "PATH");
}

void addFileOption(CommandLine *line)
{
    line->describe(areasHelp);
    line->addOption("file", "Variables from a list, one a line with an optional name, or from a CSV file.",
                    "LIST");
    line->addOption("base", "1: addresses count from 1, and 40001 is the first holding register.", "N", "0");
}

void addReadOptions(CommandLine *line)
{
    addFileOption(line);
    line->addOption("format", "Values as dec, hex, signed or float (32-bit areas).", "FORMAT", "dec");
}

ValueType formatOption(CommandLine *line)
{
    const ValueType types[] = {ValueType::Plain, ValueType::Hexadecimal, ValueType::Signed, ValueType::Float};
    return types[choice(line, "format", "dec, hex, signed or float")];
}

QList<ListedVariable> namedVariables(CommandLine *line)
{
    QList<ListedVariable> variables;
    QString error;
    const int base = line->number("base", 0, 1);
    for (const QString &word : line->words()) {
        if (const auto named = parseAssignment(word, base, &error))
            variables << *named;
        line->complain(error);
    }
    if (line->isSet("file"))
        variables << readVariableList(line->value("file"), base, &error).value_or(QList<ListedVariable>());
    line->complain(error);
    if (variables.isEmpty())
        line->complain("no variable is named; --help shows how they are written");
    return variables;
}

QList<Variable> variablesToRead(CommandLine *line, bool remote, ValueType format)
{
    QList<Variable> variables;
    for (ListedVariable named : namedVariables(line)) {
        Variable &variable = named.variable;
        if (suits(format, variable))
            variable.type = format;
        QString why = whyUnreadable(variable, remote);
        if (named.place.isEmpty() && !named.value.isNull())
            why = QStringLiteral("a value is for write");
        if (!why.isEmpty())
            line->complain("%1%2: %3", named.place, variable.name, why);
        variables << variable;
    }
    return variables;
}
