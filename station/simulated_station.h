// SPDX-License-Identifier: MIT
/// \file
/// A simulated Modbus TCP station: any number of units behind one port, as strict as the best devices. It
/// does not answer for units that it does not have, carries out a broadcast (unit 0) at every unit without a
/// reply, and closes a connection whose bytes are not Modbus. Used on one thread with an event loop; hosts
/// and tests that block use StationThread.

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
    quint16 port = 0;                              ///< 0: a free one
    QList<int> units = {1};                        ///< 1 to 255
    bool still = false;                            ///< values change only when written
    bool remote = false;                           ///< the driver's compact frames instead of Modbus
    QList<Fault> faults; ///< all that are chosen for a request are applied, in order
};

class SimulatedStation : public QObject
{
    Q_OBJECT

public:
    explicit SimulatedStation(const StationOptions &options, QObject *parent = nullptr);

    /// Listens. False, with one line in *error, when that fails. After stopListening on the same port again.
    bool listen(QString *error);
    /// Closes every connection and the listening socket; tables and faults stay.
    void stopListening();
    /// The port that is or was listened on; 0 before the first time.
    quint16 port() const { return m_port; }

    /// Replaces the faults; they count from 0 again. In remote mode those that change Modbus frames are left
    /// out.
    void setFaults(const QList<Fault> &faults);
    /// The unit, owned by the station; nullptr when it has no such unit.
    SimulatedUnit *unit(int id) const { return m_units.value(id); }
    /// The requests received, oldest first, as whole frames: the last thousand, those without a reply too.
    QList<QByteArray> requests() const { return m_requests; }

signals:
    /// A request, as a whole frame.
    void received(const QByteArray &frame);
    /// What was sent at once to a master; not what a flood repeats.
    void sent(const QByteArray &bytes);
    /// A master has written values at a unit, the same or others.
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
    void acceptAgain();

    StationOptions m_options;
    quint16 m_port = 0;
    QTcpServer m_server;
    QSocketNotifier *m_arrivals = nullptr; ///< while listening; new connections are accepted here
    QTimer m_steps;
    QTimer m_absence;
    QMap<int, SimulatedUnit *> m_units;
    std::vector<ChangingValues> m_changing;
    QList<QByteArray> m_requests;
    QByteArray m_replyBefore;
};
