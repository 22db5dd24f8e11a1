// SPDX-License-Identifier: MIT
#include "command_line.h"

#include "fault_text.h"
#include "unit_numbers.h"

#include <QtCore/QCommandLineParser>

#include <algorithm>

namespace {
const char description[] =
    "A simulated Modbus TCP station. Prints \"listening on ADDRESS:PORT\", then each write of a master,\n"
    "as \"written 1/hr:100=7\", and runs until SIGINT or SIGTERM.\n"
    "\n"
    "Example: two units on a free port, unit 2 silent at every third request:\n"
    "  modbus-station --listen 127.0.0.1:0 --units 1,2 --fault silence@unit=2,every=3\n"
    "\n"
    "Values: addresses count from 0. At the start holding register A is A, input register A is 10000 + A,\n"
    "coils 0, 3, 6... and discrete inputs 0, 5, 10... are on. Without --still these values change ten times\n"
    "a second, until a master writes them:\n"
    "  holding and input registers   0    counter\n"
    "                                1    sine, -1000 to 1000 in 10 s\n"
    "                                2    ramp, 0 to 990 in 10 s\n"
    "                                3    one bit walking from bit 0 to bit 15\n"
    "                                4-5  32-bit counter, high register first\n"
    "                                6-7  sine as 32-bit float, -100 to 100, high register first\n"
    "  coils and discrete inputs     0-7  the low bits of the counter\n"
    "--set and --values take [UNIT/]AREA:ADDRESS=VALUE[,VALUE...], such as 2/hr:100=7,-1,0xFFFF. The areas\n"
    "are coil, input, ir and hr. Without UNIT the values are set in every unit.\n"
    "\n"
    "Faults: FAULT[=VALUE][@SELECTOR=VALUE[,SELECTOR=VALUE...]]\n"
    "  silence           no reply               unit=N          wrong unit in the reply\n"
    "  delay=MS          late reply             length=N|+N|-N  wrong length field\n"
    "  late=MS           late, out of order     protocol=N      wrong protocol identifier\n"
    "  cut=BYTES         only its first bytes   transaction=N   wrong transaction identifier\n"
    "  double            reply sent twice       function=N      wrong function code\n"
    "  double=MS         and again after MS     exception=N     exception reply, request not executed\n"
    "  flood=SECONDS     sent again and again   behind          reply to the previous request\n"
    "  glue              sent with the next     greet=N         at connect, a reply of N registers\n"
    "  close, reset      connection closed or reset, no reply\n"
    "  refuse=SECONDS    all connections ended, new ones refused for this time\n"
    "MS may be FIRST-LAST: 1 ms more at each use; after LAST, FIRST again.\n"
    "Selectors: unit, function, address (N or FIRST-LAST; address: at least one of the request),\n"
    "every=K (each K-th selected request), nth=K (only the K-th).";

bool parseEndpoint(const QString &text, StationOptions *station)
{
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    QString host = text.left(colon);
    if (host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')))
        host = host.mid(1, host.size() - 2);
    if (host == QLatin1String("localhost"))
        host = QStringLiteral("127.0.0.1");
    bool ok = false;
    station->port = text.mid(colon + 1).toUShort(&ok);
    station->address = host;
    return colon > 0 && ok && !QHostAddress(host).isNull();
}

void addOptions(QCommandLineParser &parser)
{
    const auto text = [](const char *latin1) { return QString::fromLatin1(latin1); };
    parser.addOptions({
        {text("listen"),
         text("Numeric address and port to listen on; port 0: any free port. Default: 127.0.0.1:1502."),
         text("ADDRESS:PORT"), text("127.0.0.1:1502")},
        {text("units"), text("Unit numbers from 1 to 255, such as 1-5,7. Default: 1."), text("UNITS"),
         text("1")},
        {text("still"), text("Values change only when a master writes them.")},
        {text("set"), text("Sets values at the start; may be repeated."), text("VALUE")},
        {text("values"), text("Sets values from a file, one setting in each line; may be repeated."),
         text("FILE")},
        {text("trace"), text("Print every frame to standard error, for Wireshark's text import.")},
        {text("fault"), text("Adds a fault; may be repeated."), text("FAULT")},
        {text("remote"), text("Answer the driver's compact frames instead of Modbus.")},
        {{text("h"), text("help")}, text("Print this and end.")},
        {text("version"), text("Print the version and end.")},
    });
}

// Returns the error text; empty when there is no error.
QString readValues(const QCommandLineParser &parser, StationCommandLine *line)
{
    QString error;
    for (const QString &path : parser.values(QStringLiteral("values"))) {
        const std::optional<QList<ValueSetting>> settings = readValueFile(path, &error);
        if (!settings)
            return error;
        line->values += *settings;
    }
    for (const QString &text : parser.values(QStringLiteral("set"))) {
        const std::optional<ValueSetting> setting = parseValueSetting(text, &error);
        if (!setting)
            return error;
        line->values << *setting;
    }
    for (const ValueSetting &setting : qAsConst(line->values)) {
        if (setting.unit != 0 && !line->station.units.contains(setting.unit))
            return QStringLiteral("value \"%1\": there is no such unit").arg(valueText(setting));
    }
    return QString();
}

// Returns the error text; empty when there is no error.
QString readStation(const QCommandLineParser &parser, StationOptions *station)
{
    const QString listen = parser.value(QStringLiteral("listen"));
    const QString units = parser.value(QStringLiteral("units"));
    station->still = parser.isSet(QStringLiteral("still"));
    station->remote = parser.isSet(QStringLiteral("remote"));
    if (!parseEndpoint(listen, station))
        return QStringLiteral("--listen takes a numeric ADDRESS:PORT, not \"%1\"").arg(listen);
    const std::optional<QList<int>> numbers = parseUnitNumbers(units);
    if (!numbers)
        return QStringLiteral("--units takes different numbers from 1 to 255, as in 1-5,7, not \"%1\"")
            .arg(units);
    station->units = *numbers;
    QString error;
    const std::optional<QList<Fault>> faults = parseFaults(parser.values(QStringLiteral("fault")), &error);
    if (!faults)
        return error;
    station->faults = *faults;
    const auto changing = std::find_if(faults->begin(), faults->end(), needsModbusFrames);
    if (station->remote && changing != faults->end())
        return QStringLiteral("--remote allows no fault that changes Modbus frames, such as %1")
            .arg(changing->text);
    return QString();
}
} // namespace

std::optional<StationCommandLine> readCommandLine(const QStringList &words, QString *error)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(description));
    addOptions(parser);

    StationCommandLine line;
    if (!parser.parse(words))
        *error = parser.errorText();
    else if (!parser.positionalArguments().isEmpty())
        *error = QStringLiteral("unexpected argument \"%1\"").arg(parser.positionalArguments().first());
    else
        *error = readStation(parser, &line.station);
    if (error->isEmpty())
        *error = readValues(parser, &line);
    if (!error->isEmpty())
        return std::nullopt;
    line.trace = parser.isSet(QStringLiteral("trace"));
    if (parser.isSet(QStringLiteral("help")))
        line.answer = parser.helpText();
    else if (parser.isSet(QStringLiteral("version")))
        line.answer = QStringLiteral("modbus-station %1\n").arg(QCoreApplication::applicationVersion());
    return line;
}
