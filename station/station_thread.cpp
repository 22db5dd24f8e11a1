// SPDX-License-Identifier: MIT
#include "station_thread.h"

#include <type_traits>

template <typename Function> auto StationThread::inThread(Function function) const
{
    using Result = decltype(function());
    if constexpr (std::is_void_v<Result>) {
        QMetaObject::invokeMethod(m_station, function, Qt::BlockingQueuedConnection);
    } else {
        Result result{};
        QMetaObject::invokeMethod(m_station, function, Qt::BlockingQueuedConnection, &result);
        return result;
    }
}

StationThread::StationThread(StationOptions options) : m_options(std::move(options)) {}

StationThread::~StationThread()
{
    stop();
}

bool StationThread::start(QString *error)
{
    m_station = new SimulatedStation(m_options);
    m_station->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_station, &QObject::deleteLater);
    m_thread.start();
    if (!inThread([&] { return m_station->listen(error); })) {
        stop();
        return false;
    }
    m_port = inThread([this] { return m_station->port(); });
    return true;
}

void StationThread::stop()
{
    m_thread.quit();
    m_thread.wait();
    m_station = nullptr;
    m_port = 0;
}

quint16 StationThread::value(int unit, SimulatedUnit::Table table, int address) const
{
    return inThread([=] { return m_station->unit(unit)->at(table, address); });
}

void StationThread::setValue(int unit, SimulatedUnit::Table table, int address, quint16 value)
{
    inThread([=] { m_station->unit(unit)->set(table, address, value); });
}

QList<QByteArray> StationThread::requests() const
{
    return inThread([this] { return m_station->requests(); });
}

void StationThread::setFaults(const QList<Fault> &faults)
{
    inThread([&] { m_station->setFaults(faults); });
}

void StationThread::stopListening()
{
    inThread([this] { m_station->stopListening(); });
}

bool StationThread::listenAgain(QString *error)
{
    return inThread([&] { return m_station->listen(error); });
}
