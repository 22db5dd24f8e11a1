// SPDX-License-Identifier: MIT
// modbus-station: a simulated Modbus TCP station for trying masters. One thread, one event loop.
#include "command_line.h"
#include "frame_log.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {
enum ExitCode { ExitEnded = 0, ExitCannotListen = 1, ExitUsage = 2 };

int fail(ExitCode code, const QString &error)
{
    QString line = error;
    for (QChar &character : line)
        character =
            character.isPrint() ? character : QLatin1Char('?'); // keeps control sequences from the terminal
    std::fprintf(stderr, "modbus-station: %s\n", qPrintable(line));
    return code;
}

// Blocks SIGINT and SIGTERM. Returns a descriptor that becomes readable when one of them comes.
int terminationSignals()
{
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    sigprocmask(SIG_BLOCK, &stopSignals, nullptr);
    return signalfd(-1, &stopSignals, SFD_CLOEXEC);
}

void setValues(SimulatedStation &station, const ValueSetting &setting, const QList<int> &units)
{
    for (const int id : units) {
        for (int i = 0; i < setting.values.size() && (setting.unit == 0 || setting.unit == id); ++i)
            station.unit(id)->set(setting.table, setting.address + i, setting.values.at(i));
    }
}

QString endpoint(const StationOptions &options, quint16 port)
{
    const bool isIpv6 = options.address.contains(QLatin1Char(':'));
    return (isIpv6 ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2")).arg(options.address).arg(port);
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(MODBUS_VERSION));

    QString error;
    const std::optional<StationCommandLine> line = readCommandLine(QCoreApplication::arguments(), &error);
    if (!line)
        return fail(ExitUsage, error);
    if (!line->answer.isEmpty()) {
        std::fputs(qPrintable(line->answer), stdout);
        return ExitEnded;
    }

    QSocketNotifier termination(terminationSignals(), QSocketNotifier::Read);
    QObject::connect(&termination, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    std::signal(SIGPIPE, SIG_IGN); // the reader of the lines may close its end
    SimulatedStation station(line->station);
    for (const ValueSetting &setting : line->values)
        setValues(station, setting, line->station.units);
    LineOutput output(STDOUT_FILENO);
    LineOutput trace(STDERR_FILENO);
    if (!station.listen(&error))
        return fail(ExitCannotListen, error);
    std::printf("listening on %s\n", qPrintable(endpoint(line->station, station.port())));
    std::fflush(stdout);
    printWrites(station, output);
    if (line->trace)
        printFrames(station, trace);
    return QCoreApplication::exec();
}
