// SPDX-License-Identifier: MIT
// modbus-station: a simulated Modbus TCP station for trying masters. One thread, one event loop.
#include "command_line.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <sys/signalfd.h>

namespace {
enum ExitCode { ExitEnded = 0, ExitCannotListen = 1, ExitUsage = 2 };

int fail(ExitCode code, const QString &error)
{
    std::fprintf(stderr, "modbus-station: %s\n", qPrintable(error));
    return code;
}

// A descriptor that becomes readable on SIGINT and SIGTERM, which do nothing else from now on.
int endingSignals()
{
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    sigprocmask(SIG_BLOCK, &ending, nullptr);
    return signalfd(-1, &ending, SFD_CLOEXEC);
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

    QSocketNotifier ending(endingSignals(), QSocketNotifier::Read);
    QObject::connect(&ending, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    SimulatedStation station(line->station);
    if (!station.listen(&error))
        return fail(ExitCannotListen, error);
    std::printf("listening on %s\n", qPrintable(endpoint(line->station, station.port())));
    std::fflush(stdout);
    return QCoreApplication::exec();
}
