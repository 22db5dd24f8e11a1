// SPDX-License-Identifier: MIT
#include "times.h"

#include "fresh_driver.h"
#include "poll_items.h"
#include "work.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

using namespace modbus_driver;

namespace bench {

namespace {

typedef std::chrono::steady_clock Clock;

const int calls = 200000;

enum Load { Idle, Cycle, Rebuild };

/// Runs its work over and over until it ends.
class Busy
{
public:
    explicit Busy(const Step &work)
    {
        if (work)
            m_thread = std::thread([this, work] {
                while (!m_over)
                    work();
            });
    }
    ~Busy()
    {
        m_over = true;
        if (m_thread.joinable())
            m_thread.join();
    }

private:
    std::atomic<bool> m_over{false};
    std::thread m_thread;
};

QByteArray goodReply(const Protocol &request)
{
    QByteArray reply(request.replyLength, '\0');
    return reply;
}

/// Exchanges of 125 registers, and of what the panel writes, without a pause.
Step busyCycle()
{
    for (int i = 0; i < 100; ++i) {
        RW_VAR entry = readOf(AreaHoldingRegisters, 200 * i, 125);
        AddListReadVar(&entry);
    }
    return [] {
        const Protocol *request = ComCommunication();
        if (!request)
            return;
        QByteArray reply = goodReply(*request);
        DataCom(&reply, reply.size());
    };
}

Step busyRebuild()
{
    QList<VAR_ITEM> items = pollItems(10000, 1);
    return [items]() mutable { ReCreatReadVarList(&items); };
}

Step loadOf(Load load)
{
    if (load == Cycle)
        return busyCycle();
    return load == Rebuild ? busyRebuild() : Step();
}

Step panelRead()
{
    const QString address = QStringLiteral("1000");
    QByteArray out;
    return [=]() mutable { GetRegisterData(0, AreaHoldingRegisters, address, 1, out, 16); };
}

Step panelWrite()
{
    const QString address = QStringLiteral("1000");
    QByteArray value(2, 'v');
    return [=]() mutable { SetRegisterData(QString(), AreaHoldingRegisters, address, 1, value, 1, 5, 6); };
}

/// Nanoseconds of each call, least first.
std::vector<double> waits(const Step &step)
{
    std::vector<double> times;
    times.reserve(calls);
    for (int i = 0; i < calls; ++i) {
        const Clock::time_point begin = Clock::now();
        step();
        times.push_back(std::chrono::duration<double, std::nano>(Clock::now() - begin).count());
    }
    std::sort(times.begin(), times.end());
    return times;
}

void measure(benchmark::State &state, const Step &step, Load load)
{
    std::vector<double> times;
    for (auto _ : state) {
        Busy busy(loadOf(load));
        times = waits(step);
    }
    state.counters["median_ns"] = times[times.size() / 2];
    state.counters["p999_ns"] = times[times.size() * 999 / 1000];
    state.counters["worst_ns"] = times.back();
}

void registerWait(const char *name, Step (*panel)(), Load load)
{
    benchmark::RegisterBenchmark(name, [=](benchmark::State &state) {
        freshDriver(Shared);
        measure(state, panel(), load);
    })->Iterations(1);
}

} // namespace

void registerPanelWaits()
{
    registerWait("panel_wait/read/idle", panelRead, Idle);
    registerWait("panel_wait/read/cycle_flat_out", panelRead, Cycle);
    registerWait("panel_wait/read/rebuild_10000", panelRead, Rebuild);
    registerWait("panel_wait/write/idle", panelWrite, Idle);
    registerWait("panel_wait/write/cycle_flat_out", panelWrite, Cycle);
    registerWait("panel_wait/write/rebuild_10000", panelWrite, Rebuild);
}

} // namespace bench
