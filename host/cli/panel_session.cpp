// SPDX-License-Identifier: MIT
#include "panel_session.h"

#include "interrupt.h"
#include "printable.h"

#include "../explain/filled.h"

#include "../../driver/api/codes.h"

#include <set>

using namespace modbus_driver;

namespace {

const int lookMs = 100; // for Ctrl-C

// The driver keeps a pointer to it, so it lives as long as the driver.
CommSettings settings;

/// Nothing to do: this host redraws by its own clock. The list is the driver's.
void itemNotify(QList<RW_VAR> *, int, int) {}

} // namespace

PanelSession::PanelSession(const PanelOptions &options, const QList<Variable> &variables)
    : m_options(options), m_variables(variables), m_state(m_driver, variables)
{
}

/// A write that was not sent must not go out in a later session, to another station.
PanelSession::~PanelSession()
{
    if (!m_loop)
        return;
    stop();
    settings.retryLimit = 0;
    m_driver.enableStation(-1, 1);
    ::pollVariables(m_driver, {});
    QByteArray noReply;
    // A first "nothing to send" may end a burst of writes.
    for (int idleCalls = 0; idleCalls < 2; ++idleCalls) {
        while (m_driver.nextRequest())
            m_driver.handReply(&noReply, 0);
    }
}

ExitCode PanelSession::prepare(QString *error)
{
    const std::optional<DriverLibrary> driver = loadDriver(m_options.driverPath, error);
    if (!driver)
        return ExitNoLink;
    m_driver = *driver;
    if (m_options.connection.host.isEmpty() && !startStation(error))
        return ExitNoLink;
    if (m_options.trace && !m_trace.open(m_options.traceFile, peer(), m_options.connection.remote, error))
        return ExitUsage;
    configureDriver();
    m_loop = std::make_unique<CommunicationLoop>(m_driver, settings, m_options.connection, m_options.loop,
                                                 m_trace, m_state);
    return ExitDone;
}

/// A station with every unit that the variables name, on a free port of this machine.
bool PanelSession::startStation(QString *error)
{
    StationOptions station;
    const std::set<int> units = unitsOf(m_variables);
    station.units = QList<int>(units.begin(), units.end());
    station.units.removeAll(StationBroadcast);
    if (station.units.isEmpty())
        station.units << 1;
    station.remote = m_options.connection.remote;
    station.faults = m_options.faults;
    m_station = std::make_unique<StationThread>(station);
    if (!m_station->start(error))
        return false;
    m_options.connection.host = station.address;
    m_options.connection.port = m_station->port();
    return true;
}

void PanelSession::configureDriver()
{
    settings = pollSettings(m_variables, m_options.block);
    settings.retryLimit = m_options.retries;
    settings.remoteMode = m_options.connection.remote ? 1 : 0;
    settings.writeMode = WriteModeToStation;
    m_driver.setComInfo(&settings);
    m_driver.registerCallBacks(&CommunicationLoop::writeDone, &itemNotify);
    m_driver.flashLocalRegister(0, 0, 0); // this host has no local areas
    m_driver.enableStation(-1, 1);
}

bool PanelSession::readVariablesOnce()
{
    return queueReads(m_driver, settings, m_variables);
}

void PanelSession::stop()
{
    m_state.waitAtPasses(false);
    m_loop->stop();
}

PanelSnapshot PanelSession::waitForItems(int expected, const ItemEnded &onEnd) const
{
    std::set<int> ended;
    for (;;) {
        const PanelSnapshot now = m_state.snapshot();
        for (const auto &[item, result] : now.items) {
            if (result.isEnded && ended.insert(item).second && onEnd)
                onEnd(item, now);
        }
        const int count = static_cast<int>(ended.size());
        if (now.isEnded || count >= expected || isInterrupted())
            return now;
        m_state.waitForNews(0, count, lookMs);
    }
}

QString PanelSession::address() const
{
    const QString host = printable(m_options.connection.host);
    const char *const form = host.contains(QLatin1Char(':')) ? "[%1]:%2" : "%1:%2";
    return m_station ? asText("simulated station") : filled(form, host, m_options.connection.port);
}

QString PanelSession::peer() const
{
    return m_station ? address() : QStringLiteral("station ") + address();
}
