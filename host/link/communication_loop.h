// SPDX-License-Identifier: MIT
/// \file
/// The communication thread: asks the driver what to send, sends it, waits, and hands back what came, in
/// exactly the order that the driver wants. It owns the connection; nobody else calls nextRequest and
/// handReply. The driver is one object per process, and so is a running loop.

#pragma once

#include "connection.h"
#include "driver_library.h"
#include "loop_observer.h"
#include "poll_pass.h"
#include "unit_switch.h"

#include <thread>

struct LoopOptions
{
    int everyMs = 0;           ///< from the start of a pass over the poll list to that of the next
    int passes = 0;            ///< passes after which the loop ends; 0: it goes on
    int offAfter = 0;          ///< requests of a unit given up in a row before it is switched off; 0: never
    int retryOffMs = 10000;    ///< until a unit that is off is tried again
    bool waitsForLink = false; ///< the first connection is tried until it opens
};

class CommunicationLoop
{
public:
    /// The driver is set up with these settings and its poll list handed over. All references must outlive the loop.
    CommunicationLoop(const DriverLibrary &driver, CommSettings &settings,
                      const ConnectionOptions &connection, const LoopOptions &options, const LinkTrace &trace,
                      LoopObserver &observer);
    ~CommunicationLoop(); ///< stops

    /// Starts the thread. It ends by itself when the first connection fails, unless it is waited for, or the passes
    /// are done.
    void start();
    /// Ends it within a fraction of a second, and waits for that. A request in flight gets "no reply".
    void stop();

    /// The driver's call-back for an entry that has left its queue; registered by whoever sets the driver up.
    static void writeDone(int hostChannel, int hostId, int hostItem, int outcome);

private:
    void run();
    bool openLink();
    void communicate();
    void serve(const Protocol &request);
    int handBack(const Protocol &request, const Exchange &exchange);
    void judgeUnit(int unit, const Exchange &exchange, int status);
    void switchUnit(int unit, bool on);
    void nextPass();
    void idle();

    const DriverLibrary &m_driver;
    CommSettings &m_settings;
    const LoopOptions m_options;
    LoopObserver &m_observer;

    std::thread m_thread;
    std::atomic<bool> m_stop{false};

    // The members below belong to the communication thread.
    Connection m_connection;
    QElapsedTimer m_clock;
    UnitSwitch m_units;
    PollPass m_pass;
    int m_passes = 0;
    Deadline m_passEnd;       ///< the next pass starts no sooner
    bool m_isRetry = false;   ///< the driver will hand the same request out again
    Exchange m_lastSent;      ///< of the request that is tried again
    bool m_hasPolled = false; ///< there is a poll list
    int m_idleCalls = 0;      ///< times in a row that the driver had nothing to send
};
