// SPDX-License-Identifier: MIT
#include "command_line.h"

#include <QtCore/QCommandLineParser>

namespace {
const char description[] =
    "A simulated Modbus TCP station. Prints one line, \"listening on ADDRESS:PORT\", and runs until\n"
    "SIGINT or SIGTERM.\n"
    "\n"
    "Example: two units on a free port, unit 2 silent at every third request:\n"
    "  modbus-station --listen 127.0.0.1:0 --units 1,2 --fault silence@unit=2,every=3\n"
    "\n"
    "Values, addresses counted from 0. At first holding register A holds A, input register A holds\n"
    "10000 + A, coils 0, 3, 6... and discrete inputs 0, 5, 10... are on. Unless --still, ten times a\n"
    "second until a master writes there:\n"
    "  holding and input registers   0    counter\n"
    "                                1    sine, -1000 to 1000 in 10 s\n"
    "                                2    ramp, 0 to 990 in 10 s\n"
    "                                3    one bit walking from bit 0 to bit 15\n"
    "                                4-5  32-bit counter, high register first\n"
    "                                6-7  sine as 32-bit float, -100 to 100, high register first\n"
    "  coils and discrete inputs     0-7  the low bits of the counter\n"
    "\n"
    "Faults: FAULT[=VALUE][@SELECTOR=VALUE[,SELECTOR=VALUE...]]\n"
    "  silence           no reply               unit=N          wrong unit in the reply\n"
    "  delay=MS          late reply             length=N|+N|-N  wrong length field\n"
    "  cut=BYTES         only its first bytes   protocol=N      wrong protocol identifier\n"
    "  double            reply sent twice       transaction=N   wrong transaction identifier\n"
    "  glue              sent with the next     function=N      wrong function code\n"
    "  close, reset      connection ended       exception=N     exception reply, nothing carried out\n"
    "  refuse=SECONDS    all connections ended and new ones refused for so long\n"
    "Selectors: unit, function, address (N or FIRST-LAST; address: any that the request touches),\n"
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

bool parseUnits(const QString &text, QList<int> *units)
{
    units->clear();
    for (const QString &word : text.split(QLatin1Char(','))) {
        bool ok = false;
        const int unit = word.toInt(&ok);
        if (!ok || unit < 1 || unit > 255 || units->contains(unit))
            return false;
        *units << unit;
    }
    return true;
}
} // namespace

std::optional<CommandLine> readCommandLine(const QStringList &words, QString *error)
{
    const QCommandLineOption listen(
        QStringLiteral("listen"),
        QStringLiteral("Numeric address and port to listen on; port 0: a free one."),
        QStringLiteral("ADDRESS:PORT"), QStringLiteral("127.0.0.1:1502"));
    const QCommandLineOption units(QStringLiteral("units"), QStringLiteral("Unit numbers from 1 to 255."),
                                   QStringLiteral("N,N..."), QStringLiteral("1"));
    const QCommandLineOption still(QStringLiteral("still"),
                                   QStringLiteral("Values change only when written."));
    const QCommandLineOption fault(QStringLiteral("fault"),
                                   QStringLiteral("A fault; may be given repeatedly."),
                                   QStringLiteral("FAULT"));
    const QCommandLineOption remote(QStringLiteral("remote"),
                                    QStringLiteral("Answer the driver's compact frames instead of Modbus."));
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(description));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions({listen, units, still, fault, remote});

    CommandLine line;
    if (!parser.parse(words)) {
        *error = parser.errorText();
        return std::nullopt;
    }
    if (parser.isSet(help))
        line.answer = parser.helpText();
    if (parser.isSet(version))
        line.answer = QStringLiteral("modbus-station %1\n").arg(QCoreApplication::applicationVersion());
    if (!parser.positionalArguments().isEmpty()) {
        *error = QStringLiteral("unexpected argument \"%1\"").arg(parser.positionalArguments().first());
        return std::nullopt;
    }
    if (!parseEndpoint(parser.value(listen), &line.station)) {
        *error =
            QStringLiteral("--listen takes a numeric ADDRESS:PORT, not \"%1\"").arg(parser.value(listen));
        return std::nullopt;
    }
    if (!parseUnits(parser.value(units), &line.station.units)) {
        *error =
            QStringLiteral("--units takes different numbers from 1 to 255 with commas between, not \"%1\"")
                .arg(parser.value(units));
        return std::nullopt;
    }
    const std::optional<QList<Fault>> faults = parseFaults(parser.values(fault), error);
    if (!faults)
        return std::nullopt;
    line.station.faults = *faults;
    line.station.still = parser.isSet(still);
    line.station.remote = parser.isSet(remote);
    return line;
}
