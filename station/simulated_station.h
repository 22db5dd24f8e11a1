// SPDX-License-Identifier: MIT
/// \file
/// A simulated Modbus TCP station with any number of units at one port. It checks requests strictly. It does
/// not reply for units that it does not have. It executes a broadcast (unit 0) at every unit and sends no
/// reply. It closes a connection whose bytes are not Modbus. Used on one thread with an event loop; hosts and
/// tests that block use StationThread.

#pragma once

#include "changing_values.h"
#include "delivery.h"
#include "fault.h"
#include "request_facts.h"
#include "simulated_unit.h"

#include <QtCore/QMap>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpServer>

#include <vector>

class StationConnection;

struct StationOptions
{
    QString address = QStringLiteral("127.0.0.1"); ///< numeric address to listen on
    quint16 port = 0;                              ///< 0: any free port
    QList<int> units = {1};                        ///< 1 to 255
    bool still = false;                            ///< values change only when a master writes them
    bool remote = false;                           ///< the driver's compact frames instead of Modbus
    QList<Fault> faults; ///< those that are chosen for a request are applied in this order
};

class SimulatedStation : public QObject
{
    Q_OBJECT

public:
    explicit SimulatedStation(const StationOptions &options, QObject *parent = nullptr);

    /// Listens, after stopListening on the same port again. When that fails, it returns false, and *error has
    /// one line of text.
    bool listen(QString *error);
    /// Closes every connection and the listening socket; tables and faults stay.
    void stopListening();
    /// The port of the last listen(); 0 before the first time when any port was asked for.
    quint16 port() const { return m_port; }

    /// Replaces the faults. Their counts begin at 0. In remote mode, faults that change Modbus frames are
    /// left out.
    void setFaults(const QList<Fault> &faults);
    /// The unit, owned by the station; nullptr when it has no such unit.
    SimulatedUnit *unit(int id) const { return m_units.value(id); }
    /// The last thousand requests received, oldest first, as whole frames, also those without a reply.
    QList<QByteArray> requests() const { return m_requests; }

signals:
    /// A request, as a whole frame.
    void received(const QByteArray &frame);
    /// Bytes that were sent to a master together. The repetitions of a flood are left out.
    void sent(const QByteArray &bytes);
    /// A master has written values at a unit, even when they are the same as before.
    void written(int unit, const QModbusDataUnit &values);

private:
    void addUnit(int id);
    void accept();
    void pauseAccepting();
    void addConnection(int descriptor);
    void greet(StationConnection &connection);
    void record(const QByteArray &request);
    Delivery answer(const QByteArray &request);
    QByteArray carryOut(const RequestFacts &facts, const QByteArray &request);
    QByteArray carryOutAt(SimulatedUnit &unit, const QByteArray &request);
    void refuseConnections(int seconds);
    void endRefusal();

    StationOptions m_options;
    quint16 m_port = 0;
    QTcpServer m_server;
    QSocketNotifier *m_acceptNotifier = nullptr; ///< while listening; new connections are accepted here
    QTimer m_stepTimer;
    QTimer m_listenAgainTimer;
    QMap<int, SimulatedUnit *> m_units;
    std::vector<ChangingValues> m_changing;
    QList<QByteArray> m_requests;
    QByteArray m_replyBefore;
};
