// SPDX-License-Identifier: MIT
/// \file
/// A simulated station that runs in a thread and event loop of its own, for hosts and tests that block.

#pragma once

#include "simulated_station.h"

#include <QtCore/QThread>

#include <memory>

/// Owns the thread and the station in it. start and stop are called by the owner, from one thread.
class StationThread
{
public:
    explicit StationThread(StationOptions options);
    ~StationThread(); ///< stops

    /// Listens. False, with one line in *error, when the address cannot be listened on.
    bool start(QString *error);
    /// Closes every connection and the listening socket, and waits for the thread to end.
    void stop();
    /// The port that is listened on, also when 0 was asked for; 0 when not started.
    quint16 port() const { return m_port; }

private:
    StationOptions m_options;
    QThread m_thread;
    SimulatedStation *m_station = nullptr;
    quint16 m_port = 0;
};
