// SPDX-License-Identifier: MIT
/// \file
/// A simulated station that runs in a thread and event loop of its own, for hosts and tests that block. A
/// QCoreApplication must exist. Everything here is called by the owner, from one thread, and returns when the
/// station's thread has done it. What reads or changes the station needs a started one.

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

    /// Listens. False, with one line in *error, when the address cannot be listened on.
    bool start(QString *error);
    /// Closes every connection and the listening socket, and waits for the thread to end.
    void stop();
    /// The port that is listened on, also when 0 was asked for; 0 when not started.
    quint16 port() const { return m_port; }

    /// The register, or 0 or 1 for a bit; 0 for an address outside the table. The unit must be one of the
    /// options'.
    quint16 value(int unit, SimulatedUnit::Table table, int address) const;
    /// Sets a register or a bit.
    void setValue(int unit, SimulatedUnit::Table table, int address, quint16 value);

    /// The last thousand requests received, oldest first, as whole frames.
    QList<QByteArray> requests() const;
    /// Replaces the faults; they count from 0 again.
    void setFaults(const QList<Fault> &faults);
    /// Refuses connections, and ends those there are, until listenAgain. Tables and faults stay.
    void stopListening();
    /// Listens on the same port again. False, with one line in *error, when someone else has it.
    bool listenAgain(QString *error);

private:
    /// Runs a function of no arguments on the station's thread and returns what it returns.
    template <typename Function> auto inThread(Function function) const;

    StationOptions m_options;
    std::thread m_thread; // joined, it is gone for good; a QThread may still be ending when wait() returns
    SimulatedStation *m_station = nullptr; // on the thread's stack, and so is its loop
    QEventLoop *m_loop = nullptr;
    quint16 m_port = 0;
};
