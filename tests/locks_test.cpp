// SPDX-License-Identifier: MIT
// Which lock each call waits for, and which it does not: the test holds the lock, another thread makes the call.
#include "driver_fixture.h"

#include <atomic>
#include <chrono>
#include <thread>

using namespace modbus_driver;

typedef DriverFixture Locks;

namespace {

typedef QMutex Modbus_TCPIP_RTU_M::*Lock;
const Lock list = &Modbus_TCPIP_RTU_M::listMutex, image = &Modbus_TCPIP_RTU_M::imageMutex,
           stations = &Modbus_TCPIP_RTU_M::stationMutex, none = nullptr;

RW_VAR var;
QByteArray shown;

typedef void (*Call)();
const Call queueWrite = [] { AddListWriteVar(&var, QueueMerged); };
const Call queueRead = [] { AddListOnceReadVar(&var, QueueMerged); };
const Call appendRead = [] { AddListOnceReadVar(&var, QueueAsIs); };
const Call show = [] { GetRegisterData(0, Registers, QString::number(0), 1, shown, 1); };
const Call enter = [] { SetRegisterData(QString(), Registers, QString::number(0), 1, var.data, 1, 0, 0); };
const Call enterBit = [] { SetRegisterData(QString(), RegisterBit, QString::fromLatin1("0.0"), 1, var.data, 1, 0, 0); };
const Call mirror = [] { WriteDataToLocal(&var); };
const Call ask = [] { ComCommunication(); };
const Call switchOff = [] { EnCommStation(1, 0); };
const Call switchOn = [] { EnCommStation(1, 1); };
const Call isOff = [] { shown.append(Ethernetcontains(1) ? '1' : '0'); };
const Call nothing = [] {};
const Call toImageOnly = [] { PLC_driver.comInfo->writeMode = 0; };
const Call afterFailure = [] { PLC_driver.lastFailed = true; };
const Call readInFlight = [] { queueRead(), ask(); };
const Call writeInFlight = [] { queueWrite(), ask(); };
const Call readHalfInFlight = [] { enterBit(), ask(); };
const Call otherLinkInFlight = [] { var.linkId = 7, var.subIndex = SubIndexReadHalf, appendRead(), ask(); };
const Call answer = [] {
    QByteArray reply(PLC_driver.pendingList.isEmpty() ? 0 : PLC_driver.pendingList.at(0).replyLength, '\x11');
    DataCom(&reply, reply.size());
};
const Call rebuild = [] {
    QList<VAR_ITEM> items = QList<VAR_ITEM>() << VAR_ITEM();
    ReCreatReadVarList(&items);
};

bool isHeld(Lock lock)
{
    const bool isFree = (PLC_driver.*lock).tryLock();
    if (isFree)
        (PLC_driver.*lock).unlock();
    return !isFree;
}

/// What the lock guards, as far as the calls here change it.
std::string guarded(Lock lock)
{
    const Modbus_TCPIP_RTU_M &d = PLC_driver;
    if (lock == list)
        return listed(d.readList + d.writeList + d.onceReadList) + ' ' + std::to_string(d.pendingList.size());
    if (lock == stations)
        return std::to_string(d.disabledStations.size()) + hex(shown);
    return std::to_string(d.holdingRegisters[0]) + ' ' + std::to_string(d.extendList.size()) + hex(shown);
}

} // namespace

TEST_F(Locks, EachCallWaitsForItsLocksAndForNoOther)
{
    const struct
    {
        const char *what;
        Call prepare, call;
        Lock held; ///< by the test
        bool waits;
        Lock outer; ///< that the call holds while it waits
    } rows[] = {
        {"queue a write", nothing, queueWrite, list, true, none},
        {"queue a one-shot read", nothing, queueRead, list, true, none},
        {"append a one-shot read", nothing, appendRead, list, true, none},
        {"host write that is queued", nothing, enter, list, true, none},
        {"rebuild the poll list", nothing, rebuild, list, true, none},
        {"ask with nothing in flight", queueRead, ask, list, true, none},
        {"answer a write", writeInFlight, answer, list, true, none},
        {"answer a one-shot read", readInFlight, answer, list, true, none},
        {"answer a read half", readHalfInFlight, answer, list, true, none},
        {"switch a station off", nothing, switchOff, stations, true, none},
        {"switch a station on", switchOff, switchOn, stations, true, none},
        {"is a station off", nothing, isOff, stations, true, none},
        {"ask with a station to look up", queueRead, ask, stations, true, list},
        {"show a value", nothing, show, image, true, none},
        {"mirror a write", nothing, mirror, image, true, none},
        {"host write to the image only", toImageOnly, enter, image, true, none},
        {"host write after a failure", afterFailure, enter, image, true, none},
        {"ask for a write", queueWrite, ask, image, true, list},
        {"store a reply", readInFlight, answer, image, true, none},
        {"store a read half", readHalfInFlight, answer, image, true, list},

        {"ask with a request in flight", readInFlight, ask, list, false, none},
        {"answer with nothing in flight", nothing, answer, list, false, none},
        {"show a value beside the lists", nothing, show, list, false, none},
        {"host write to the image beside the lists", toImageOnly, enter, list, false, none},
        {"switch beside the lists", nothing, switchOff, list, false, none},
        {"queue beside the image", nothing, queueWrite, image, false, none},
        {"rebuild beside the image", nothing, rebuild, image, false, none},
        {"ask for a read beside the image", queueRead, ask, image, false, none},
        {"store a reply of another link beside the image", otherLinkInFlight, answer, image, false, none},
        {"answer beside the stations", readInFlight, answer, stations, false, none},
    };
    for (int perStation : {0, 1}) {
        for (const auto &row : rows) {
            SCOPED_TRACE(testing::Message() << row.what << ", multiStation " << perStation);
            restart(perStation);
            var = access(Registers, 0, 1, "0100");
            var.linkId = settings.linkId;
            var.addressText = QString::number(0);
            shown.clear();
            row.prepare();
            const std::string before = guarded(row.held);
            std::atomic<bool> returned(false);
            (PLC_driver.*row.held).lock();
            std::thread other([&] {
                row.call();
                returned = true;
            });
            // A thread that comes late can only hide a fault.
            const int patience = row.waits && !row.outer ? 20 : 5000; // ms
            for (int ms = 0; ms < patience && !returned && !(row.outer && isHeld(row.outer)); ++ms)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            EXPECT_EQ(returned, !row.waits);
            EXPECT_TRUE(!row.outer || isHeld(row.outer)) << "the outer lock is not held";
            EXPECT_TRUE(!row.waits || guarded(row.held) == before) << "something was done ahead of the lock";
            (PLC_driver.*row.held).unlock();
            other.join();
        }
    }
}
