// SPDX-License-Identifier: MIT
#include "simulated_station.h"

#include "../driver/api/codes.h"
#include "../driver/base/modbus_wire.h"
#include "fault_application.h"
#include "fault_choice.h"
#include "modbus_frames.h"
#include "remote_peer.h"
#include "station_connection.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <sys/socket.h>
#include <utility>

namespace wire = modbus_driver::wire;

namespace {
const int requestsKept = 1000;
const int retryMilliseconds = 200; // when the port is in use, or when accept4 fails (no file descriptor left)
} // namespace

SimulatedStation::SimulatedStation(const StationOptions &options, QObject *parent)
    : QObject(parent), m_options(options), m_port(options.port), m_server(this), m_stepTimer(this),
      m_listenAgainTimer(this)
{
    setFaults(options.faults);
    for (const int id : options.units) {
        if (!m_units.contains(id))
            addUnit(id);
    }
    m_listenAgainTimer.setSingleShot(true);
    connect(&m_listenAgainTimer, &QTimer::timeout, this, &SimulatedStation::endRefusal);
    if (options.still)
        return;
    for (SimulatedUnit *unit : qAsConst(m_units))
        m_changing.emplace_back(*unit);
    connect(&m_stepTimer, &QTimer::timeout, this, [this] {
        for (ChangingValues &values : m_changing)
            values.step();
    });
}

void SimulatedStation::addUnit(int id)
{
    auto *unit = new SimulatedUnit(id, this);
    connect(unit, &SimulatedUnit::written, this,
            [this, id](const QModbusDataUnit &values) { emit written(id, values); });
    m_units.insert(id, unit);
}

bool SimulatedStation::listen(QString *error)
{
    m_listenAgainTimer.stop();
    if (!m_server.listen(QHostAddress(m_options.address), m_port)) {
        *error = QStringLiteral("cannot listen on %1:%2: %3")
                     .arg(m_options.address)
                     .arg(m_port)
                     .arg(m_server.errorString());
        return false;
    }
    m_port = m_server.serverPort();
    m_server.pauseAccepting();
    m_acceptNotifier = new QSocketNotifier(m_server.socketDescriptor(), QSocketNotifier::Read, this);
    connect(m_acceptNotifier, &QSocketNotifier::activated, this, &SimulatedStation::accept);
    if (!m_options.still)
        m_stepTimer.start(ChangingValues::stepMilliseconds);
    return true;
}

void SimulatedStation::stopListening()
{
    m_listenAgainTimer.stop();
    if (m_acceptNotifier) {
        m_acceptNotifier->setEnabled(false);
        m_acceptNotifier->deleteLater();
        m_acceptNotifier = nullptr;
    }
    m_server.close();
    const QList<StationConnection *> connections = findChildren<StationConnection *>();
    for (StationConnection *connection : connections)
        connection->drop();
}

// QTcpServer does not accept by itself: without a free file descriptor it would try again without a pause.
void SimulatedStation::accept()
{
    while (m_server.isListening()) {
        const int descriptor =
            accept4(static_cast<int>(m_server.socketDescriptor()), nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor >= 0)
            addConnection(descriptor);
        else if (errno == EAGAIN)
            return;
        else
            return pauseAccepting();
    }
}

void SimulatedStation::pauseAccepting()
{
    m_acceptNotifier->setEnabled(false);
    QTimer::singleShot(retryMilliseconds, this, [this] {
        if (m_acceptNotifier)
            m_acceptNotifier->setEnabled(true);
    });
}

void SimulatedStation::addConnection(int descriptor)
{
    auto *socket = new QTcpSocket;
    socket->setSocketDescriptor(descriptor);
    auto *connection = new StationConnection(
        socket, m_options.remote ? remote::frameSize : modbus::frameSize,
        [this](const QByteArray &request) {
            record(request);
            return answer(request);
        },
        this);
    connect(connection, &StationConnection::sent, this, &SimulatedStation::sent);
    greet(*connection);
}

// A greeting is the reply to a read that no master sent. The other faults apply to it too.
void SimulatedStation::greet(StationConnection &connection)
{
    const QList<Fault> greetings = chooseGreetings(m_options.faults);
    for (const Fault &fault : greetings) {
        const int unit = fault.unit.firstOr(m_options.units.first());
        const int function = fault.function.firstOr(wire::ReadHoldingRegisters);
        connection.deliver(answer(modbus::request(unit, function, fault.address.firstOr(0), fault.value)));
    }
}

void SimulatedStation::setFaults(const QList<Fault> &faults)
{
    m_options.faults.clear();
    std::copy_if(faults.begin(), faults.end(), std::back_inserter(m_options.faults),
                 [this](const Fault &fault) { return !m_options.remote || !needsModbusFrames(fault); });
}

void SimulatedStation::record(const QByteArray &request)
{
    if (m_requests.size() == requestsKept)
        m_requests.removeFirst();
    m_requests << request;
    emit received(request);
}

Delivery SimulatedStation::answer(const QByteArray &request)
{
    const RequestFacts facts = m_options.remote ? remote::facts(request) : modbus::facts(request);
    const QList<Fault> faults = chooseFaults(m_options.faults, facts);
    const auto exception = std::find_if(faults.begin(), faults.end(),
                                        [](const Fault &fault) { return fault.kind == Fault::Exception; });
    Delivery delivery;
    if (exception == faults.end())
        delivery.reply = carryOut(facts, request);
    else if (facts.unit != modbus_driver::StationBroadcast)
        delivery.reply = modbus::exceptionReply(request, exception->value);
    if (facts.unit != modbus_driver::StationBroadcast)
        delivery.replyBefore = std::exchange(m_replyBefore, delivery.reply);
    for (const Fault &fault : faults)
        applyFault(fault, delivery);
    if (delivery.refuseSeconds == 0)
        return delivery;
    refuseConnections(delivery.refuseSeconds);
    return Delivery();
}

QByteArray SimulatedStation::carryOut(const RequestFacts &facts, const QByteArray &request)
{
    if (facts.unit != modbus_driver::StationBroadcast) {
        SimulatedUnit *unit = m_units.value(facts.unit);
        return unit ? carryOutAt(*unit, request) : QByteArray();
    }
    for (SimulatedUnit *unit : qAsConst(m_units))
        carryOutAt(*unit, request);
    return QByteArray();
}

QByteArray SimulatedStation::carryOutAt(SimulatedUnit &unit, const QByteArray &request)
{
    unit.setServesMaster(true);
    const QByteArray reply =
        m_options.remote ? remote::carryOut(unit, request) : modbus::carryOut(unit, request);
    unit.setServesMaster(false);
    return reply;
}

void SimulatedStation::refuseConnections(int seconds)
{
    stopListening();
    m_listenAgainTimer.start(seconds * 1000);
}

void SimulatedStation::endRefusal()
{
    QString error;
    if (!listen(&error))
        m_listenAgainTimer.start(retryMilliseconds); // another program uses the port
}
