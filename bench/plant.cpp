// SPDX-License-Identifier: MIT
#include "plant.h"

#include "allocations.h"
#include "fresh_driver.h"

#include <cstdio>
#include <memory>
#include <set>

using namespace modbus_driver;

namespace bench {

namespace {

const int stations = 250;
const int registersOfStation = 400;

/// What a host chooses. Times are in milliseconds.
struct Plan
{
    ImageMode mode;
    int block, timeOut, retries;
};

/// Stations `first` up to, not including, `end`.
struct Range
{
    int first, end;
};
const Range everyStation = {1, stations + 1};

/// How dead stations are treated.
enum Dead { NoneIsDead, KeptOn, SwitchedOff };

bool isDead(int station)
{
    return station % 20 == 0; // 5 %
}

int roundTrip(int station)
{
    return 2 + station * 37 % 49; // 2 to 50, evenly spread
}

void addItems(QList<VAR_ITEM> *items, const Range &range, int area, int start, int count, int step)
{
    for (int station = range.first; station < range.end; ++station) {
        for (int i = 0; i < count; ++i) {
            VAR_ITEM item;
            item.area = static_cast<quint8>(area);
            item.station = static_cast<quint8>(station);
            item.addressText = QString::number(start + i * step);
            item.count = step;
            items->append(item);
        }
    }
}

/// 400 registers of each station: 200 holding registers, 60 32-bit values, 60 input registers, 320 coils.
QList<VAR_ITEM> itemsOf(const Range &range)
{
    QList<VAR_ITEM> items;
    addItems(&items, range, AreaHoldingRegisters, 0, 200, 1);
    addItems(&items, range, AreaHoldingPairs, 1000, 60, 2);
    addItems(&items, range, AreaInputRegisters, 0, 60, 1);
    addItems(&items, range, AreaCoils, 0, 320, 1);
    return items;
}

/// While all stations share one image the driver makes requests for one station at a time; the host joins the lists.
void pollShared(CommSettings *settings, const Range &range)
{
    QList<RW_VAR> requests;
    QList<VAR_ITEM> items = itemsOf({range.first, range.first + 1});
    for (int station = range.first; station < range.end; ++station) {
        settings->defaultStation = station;
        ReCreatReadVarList(&items);
        requests += PLC_driver.readList;
    }
    PLC_driver.readList = requests;
}

void poll(const Plan &plan, const Range &range)
{
    CommSettings &settings = freshDriver(plan.mode);
    settings.writeBlockSize = plan.block;
    settings.retryLimit = plan.retries;
    if (plan.mode == Shared) {
        pollShared(&settings, range);
    } else {
        QList<VAR_ITEM> items = itemsOf(range);
        ReCreatReadVarList(&items);
    }
}

QByteArray replyTo(const Protocol &request)
{
    return QByteArray(request.replyLength, '\1');
}

/// A host that polls in virtual time.
class Host
{
public:
    Host(const Plan &plan, const Range &range, Dead dead) : m_plan(plan), m_dead(dead) { poll(plan, range); }

    /// Until every live station has been read once. Stations that were switched off are tried again, one in a pass.
    void pass()
    {
        if (!m_off.empty())
            switchOn(*m_off.begin());
        for (int left = liveRequests(); left > 0;)
            left -= exchange();
    }

    double milliseconds = 0; ///< of virtual time
    double lost = 0;         ///< of these, waited for dead stations

private:
    bool isSilent(int station) const { return m_dead != NoneIsDead && isDead(station); }

    int liveRequests() const
    {
        int live = 0;
        for (const RW_VAR &request : PLC_driver.readList)
            live += !isSilent(request.station);
        return live;
    }

    void switchOn(int station)
    {
        EnCommStation(station, 1);
        m_off.erase(station);
    }

    /// True when a reply came.
    bool exchange()
    {
        const Protocol *request = ComCommunication();
        if (!request)
            giveUp("the plant is not polled");
        const int station = request->var.station;
        if (!isSilent(station)) {
            QByteArray reply = replyTo(*request);
            require(DataCom(&reply, reply.size())->status == StatusDone, "a reply was refused");
            milliseconds += roundTrip(station);
            return true;
        }
        milliseconds += m_plan.timeOut;
        lost += m_plan.timeOut;
        const bool givenUp = DataCom(nullptr, 0)->status != StatusRetry;
        if (givenUp && m_dead == SwitchedOff) {
            EnCommStation(station, 0);
            m_off.insert(station);
        }
        return false;
    }

    const Plan m_plan;
    const Dead m_dead;
    std::set<int> m_off;
};

struct Passed
{
    double seconds, lost;
};

/// The mean of some passes, after one in which dead stations were found.
Passed passes(const Plan &plan, const Range &range, Dead dead)
{
    const int count = 4;
    Host host(plan, range, dead);
    host.pass();
    host.milliseconds = host.lost = 0;
    for (int i = 0; i < count; ++i)
        host.pass();
    return {host.milliseconds / 1000 / count, host.lost / host.milliseconds};
}

void printPlan(const char *separator, const Plan &plan)
{
    const Passed live = passes(plan, everyStation, NoneIsDead);
    const int requests = PLC_driver.readList.size();
    const Passed kept = passes(plan, everyStation, KeptOn);
    const Passed off = passes(plan, everyStation, SwitchedOff);
    const double half = passes(plan, {1, stations / 2 + 1}, SwitchedOff).seconds;
    const double other = passes(plan, {stations / 2 + 1, stations + 1}, SwitchedOff).seconds;
    std::printf(
        "%s\n  {\"image\": \"%s\", \"block\": %d, \"time_out\": %d, \"retries\": %d, \"requests\": %d, "
        "\"live\": %.2f, \"kept\": %.2f, \"kept_lost\": %.4f, \"off\": %.2f, \"off_lost\": %.4f, "
        "\"two_links\": %.2f}",
        separator, nameOf(plan.mode), plan.block, plan.timeOut, plan.retries, requests, live.seconds,
        kept.seconds, kept.lost, off.seconds, off.lost, half > other ? half : other);
}

void printMemory(const char *separator, ImageMode mode)
{
    freshDriver(mode);
    ExtendFindSameVar(1, AreaCoils, 0); // the index forgets what it had
    HeapCount count;
    {
        Host host({mode, 125, 500, 1}, everyStation, NoneIsDead);
        host.pass();
    }
    count.stop();
    const double registers = double(stations) * registersOfStation;
    std::printf("%s\n  {\"image\": \"%s\", \"kept\": %.0f, \"kept_per_register\": %.1f, \"peak\": %.0f}",
                separator, nameOf(mode), double(count.heldBytes()), double(count.heldBytes()) / registers,
                double(count.peakBytes()));
}

Step preparePass(ImageMode mode)
{
    auto host = std::make_shared<Host>(Plan{mode, 125, 500, 1}, everyStation, NoneIsDead);
    host->pass();
    return [host] { host->pass(); };
}

} // namespace

void printPlant()
{
    const Plan plans[] = {{Shared, 125, 500, 1},     {PerStation, 125, 500, 1}, {PerStation, 60, 500, 1},
                          {PerStation, 16, 500, 1},  {PerStation, 125, 100, 1}, {PerStation, 125, 1000, 1},
                          {PerStation, 125, 500, 0}, {PerStation, 125, 500, 2}};
    std::printf("{\"plans\": [");
    const char *separator = "";
    for (const Plan &plan : plans) {
        printPlan(separator, plan);
        separator = ",";
    }
    std::printf("\n], \"memory\": [");
    printMemory("", Shared);
    printMemory(",", PerStation);
    std::printf("\n]}\n");
}

void addPlantPasses(Works *works)
{
    for (ImageMode mode : {Shared, PerStation})
        works->push_back(
            {std::string("plant/pass/") + nameOf(mode), [=] { return preparePass(mode); }, stations});
}

} // namespace bench
