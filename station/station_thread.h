// SPDX-License-Identifier: MIT
/// \file
/// A simulated station with its own thread and event loop, for hosts and tests that block. A QCoreApplication
/// must exist. The owner makes all calls from one thread. A call returns when the station's thread has
/// finished it. Calls that read or change the station need a station that was started.

#pragma once

#include "fault_text.h"
#include "simulated_station.h"

#include <thread>

class QEventLoop;

/// Owns the thread and the station in it.
class StationThread
{
public:
    explicit StationThread(StationOptions options);
    ~StationThread(); ///< stops

    /// Starts the thread and listens. When that fails, it returns false, and *error has one line of text.
    bool start(QString *error);
    /// Closes every connection and the listening socket, and waits for the thread to end.
    void stop();
    /// The actual port, also when the options have port 0. 0 when the station is not started.
    quint16 port() const { return m_port; }

    /// The register, or 0 or 1 for a bit; 0 for an address outside the table. The unit must be one of the
    /// options.
    quint16 value(int unit, SimulatedUnit::Table table, int address) const;
    /// Sets a register or a bit.
    void setValue(int unit, SimulatedUnit::Table table, int address, quint16 value);

    /// The last thousand requests received, oldest first, as whole frames.
    QList<QByteArray> requests() const;
    /// Replaces the faults. Their counts begin at 0.
    void setFaults(const QList<Fault> &faults);
    /// Ends all connections and refuses new ones until listenAgain. Tables and faults stay.
    void stopListening();
    /// Listens on the same port again. When another program uses it, this returns false, and *error has one
    /// line of text.
    bool listenAgain(QString *error);

private:
    /// Runs a function of no arguments on the station's thread and returns what it returns.
    template <typename Function> auto inThread(Function function) const;

    StationOptions m_options;
    std::thread m_thread; // not a QThread, which may still be running for a moment after wait()
    SimulatedStation *m_station = nullptr; // this and m_loop point to the stack of the thread
    QEventLoop *m_loop = nullptr;
    quint16 m_port = 0;
};
