// SPDX-License-Identifier: MIT
/// \file
/// A panel in one object: driver, station when none is named, trace, communication loop. The order of its
/// calls is the order in which a host starts. On the main thread.

#pragma once

#include "exit_codes.h"
#include "trace.h"

#include "../explain/panel_state.h"
#include "../explain/poll_list.h"
#include "../link/communication_loop.h"

#include "../../station/station_thread.h"

#include <functional>
#include <memory>

struct PanelOptions
{
    QString driverPath;
    ConnectionOptions connection; ///< without a host the built-in station is started
    LoopOptions loop;
    QList<Fault> faults; ///< of the built-in station
    int block = 100;     ///< most registers in a request, or bytes of bits
    int retries = 1;     ///< of a request, by the driver
    bool trace = false;
    QString traceFile; ///< empty: stderr
};

class PanelSession
{
public:
    PanelSession(const PanelOptions &options, const QList<Variable> &variables);
    ~PanelSession(); ///< stops, and leaves the driver with nothing to do

    /// Loads and configures everything. Returns ExitDone, or the exit code with one line in *error.
    ExitCode prepare(QString *error);

    /// Puts the variables on the driver's poll list.
    void pollVariables() { ::pollVariables(m_driver, m_variables); }
    /// Queues each variable as a one-shot read; its hostItem is its position. False when the driver's queue
    /// is full and may not hold all.
    bool readVariablesOnce();

    void start() { m_loop->start(); }
    void stop();

    /// Waits until nothing of so many items is queued any more, the communication has ended or a signal has come, and
    /// returns the last snapshot. Calls `onEnd` once with each item that has ended, as soon as it has.
    using ItemEnded = std::function<void(int item, const PanelSnapshot &now)>;
    PanelSnapshot waitForItems(int expected, const ItemEnded &onEnd = nullptr) const;

    const DriverLibrary &driver() const { return m_driver; }
    PanelState &state() { return m_state; }
    /// For who asks without start(): the trace, and the station's place and the rules of the connection.
    const Trace &trace() const { return m_trace; }
    const ConnectionOptions &connection() const { return m_options.connection; }
    StationThread *station() const { return m_station.get(); } ///< the built-in one, or null
    /// Where the station is: "192.0.2.7:502", or "simulated station". After prepare().
    QString address() const;
    /// The station in words: "station 192.0.2.7:502", or "simulated station".
    QString peer() const;

private:
    bool startStation(QString *error);
    void configureDriver();

    PanelOptions m_options;
    QList<Variable> m_variables;
    DriverLibrary m_driver;
    PanelState m_state;
    Trace m_trace;
    std::unique_ptr<StationThread> m_station;
    std::unique_ptr<CommunicationLoop> m_loop; ///< ends before what it uses
};
