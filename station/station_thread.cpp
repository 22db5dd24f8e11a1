// SPDX-License-Identifier: MIT
#include "station_thread.h"

#include <QtCore/QEventLoop>

#include <future>
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
    std::promise<bool> listening;
    m_thread = std::thread([this, error, &listening] {
        SimulatedStation station(m_options);
        QEventLoop loop;
        m_station = &station;
        m_loop = &loop;
        const bool listens = station.listen(error);
        m_port = station.port();
        listening.set_value(listens);
        loop.exec();
        m_station = nullptr;
        m_loop = nullptr;
    });
    if (listening.get_future().get())
        return true;
    stop();
    return false;
}

void StationThread::stop()
{
    if (!m_thread.joinable())
        return;
    QMetaObject::invokeMethod(m_loop, &QEventLoop::quit, Qt::QueuedConnection);
    m_thread.join();
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
