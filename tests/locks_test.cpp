// SPDX-License-Identifier: MIT
// Which locks each call waits for, as the table of docs/host-guide.md has it, and that it waits for no other: the test
// holds a lock, another thread makes the call.
#include "driver_fixture.h"

#include <QtCore/QFile>

#include <atomic>
#include <chrono>
#include <thread>

using namespace modbus_driver;

typedef DriverFixture Locks;

namespace {

QMutex *const locks[] = {&PLC_driver.listMutex, &PLC_driver.imageMutex, &PLC_driver.stationMutex};
const char *const names[] = {"`listMutex`", "`imageMutex`", "`stationMutex`"};
enum { List = 1, Image = 2, Stations = 4, InList = 8 };

RW_VAR var;
QByteArray shown;

typedef void (*Call)();
const Call queueWrite = [] { AddListWriteVar(&var, QueueMerged); };
const Call queueRead = [] { AddListOnceReadVar(&var, QueueMerged); };
const Call appendRead = [] { AddListOnceReadVar(&var, QueueAsIs); };
const Call show = [] { GetRegisterData(0, Registers, QString::number(0), 1, shown, 1); };
const Call enter = [] { SetRegisterData(QString(), Registers, QString::number(0), 1, var.data, 1, 0, 0); };
const Call ask = [] { ComCommunication(); };
const Call switchOff = [] { EnCommStation(1, 0); };
const Call nothing = [] {};
const Call readInFlight = [] { queueRead(), ask(); };
const Call answer = [] {
    QByteArray reply(PLC_driver.pendingList.isEmpty() ? 0 : PLC_driver.pendingList.at(0).replyLength, '\x11');
    DataCom(&reply, reply.size());
};

const struct
{
    const char *call; ///< as the guide has it
    const char *when;
    Call prepare, run;
    int differs; ///< locks of the guide that this case does not take; InList: listMutex is held while another one is taken
} rows[] = {
    {"`SetComInfo`", "", nothing, [] { SetComInfo(PLC_driver.comInfo); }, 0},
    {"`RegistCallBackFuncIntf`", "", nothing, [] { RegistCallBackFuncIntf(nullptr, nullptr); }, 0},
    {"`FlashLocalRegister`", "", nothing, [] { FlashLocalRegister(0, 0, 0); }, 0},
    {"`ComCommunication`", "to read", queueRead, ask, Image | InList},
    {"`ComCommunication`", "to write", queueWrite, ask, InList},
    {"`ComCommunication`", "with a request in flight", readInFlight, ask, List | Image | Stations},
    {"`DataCom`", "of a write", [] { var.rwFlag = AccessWrite, queueWrite(), ask(); }, answer, Image},
    {"`DataCom`", "of a read", readInFlight, answer, 0},
    {"`DataCom`", "of a read half", [] { write(RegisterBit, "0.0", 1, "01"), ask(); }, answer, InList},
    {"`DataCom`", "of another link", [] { var.linkId = 7, appendRead(), ask(); }, answer, Image},
    {"`DataCom`", "with nothing in flight", nothing, answer, List | Image},
    {"`AddListWriteVar`", "", nothing, queueWrite, 0},
    {"`AddListOnceReadVar`", "converted", nothing, queueRead, 0},
    {"`AddListOnceReadVar`", "as it is", nothing, appendRead, 0},
    {"`ReCreatReadVarList`", "", nothing, [] { poll("5:0*1"); }, 0},
    {"`SetRegisterData` with `writeMode` 2", "", nothing, enter, Image},
    {"`SetRegisterData` with `writeMode` 2", "failing", [] { PLC_driver.lastFailed = true; }, enter, 0},
    {"`SetRegisterData` with another", "", [] { PLC_driver.comInfo->writeMode = 0; }, enter, 0},
    {"`GetRegisterData`", "", nothing, show, 0},
    {"`EnCommStation`", "off", nothing, switchOff, 0},
    {"`EnCommStation`", "on", switchOff, [] { EnCommStation(1, 1); }, 0},
    {"`EnableEthernet`", "", nothing, [] { EnableEthernet(1, 0); }, 0},
    {"`Ethernetcontains`", "", nothing, [] { shown.append(Ethernetcontains(1) ? '1' : '0'); }, 0},
    {"`PLCAddressChangeIntef`", "", nothing, [] { PLCAddressChangeIntef(RegisterBit, QString()); }, 0},
    {"`QueryFinishFlag`", "", nothing, [] { QueryFinishFlag(); }, 0},
    {"`CalCRC`", "", nothing, [] { CalCRC(nullptr, 0); }, 0},
};

/// The locks that the guide's row of the call names.
int told(const char *call)
{
    QFile file(QString::fromLatin1(SOURCES "/docs/host-guide.md"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const std::string guide = file.readAll().constData();
    const std::size_t at = guide.find(call, guide.find("| Call |"));
    const std::string row = guide.substr(at, guide.find('\n', at) - at);
    int locksOfRow = 0;
    for (int lock = 0; lock < 3; ++lock)
        locksOfRow |= (row.find(names[lock]) != std::string::npos) << lock;
    EXPECT_EQ(row.find("deadlock") != std::string::npos, (locksOfRow & List) != 0) << row;
    return locksOfRow;
}

/// What the lock guards, as far as the calls here change it.
std::string guarded(int lock)
{
    const Modbus_TCPIP_RTU_M &d = PLC_driver;
    const int numbers[] = {d.pendingList.size(), d.holdingRegisters[0], d.disabledStations.size()};
    const QList<RW_VAR> queued = lock == 0 ? d.readList + d.writeList + d.onceReadList : QList<RW_VAR>();
    return std::to_string(numbers[lock]) + listed(queued) + hex(shown);
}

template <typename Event> void wait(int ms, Event event)
{
    while (ms-- > 0 && !event())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// A thread that comes late can only hide a fault.
void expectToWait(Call run, int lock, bool waits, bool nested)
{
    const std::string before = guarded(lock);
    std::atomic<bool> returned(false);
    locks[lock]->lock();
    std::thread other([&] {
        run();
        returned = true;
    });
    if (nested)
        wait(5000, [&] { return returned || isHeld(locks[0]); });
    wait(waits ? 20 : 5000, [&] { return bool(returned); });
    EXPECT_EQ(returned, !waits);
    EXPECT_TRUE(!nested || isHeld(locks[0])) << "listMutex is not held while it waits";
    EXPECT_TRUE(!waits || guarded(lock) == before) << "something was done ahead of the lock";
    locks[lock]->unlock();
    other.join();
}

} // namespace

TEST_F(Locks, EachCallWaitsForTheLocksThatTheGuideNamesAndForNoOther)
{
    for (const auto &row : rows) {
        for (int lock = 0; lock < 3; ++lock) {
            SCOPED_TRACE(testing::Message() << row.call << ' ' << row.when << ' ' << names[lock]);
            restart(0);
            var = access(Registers, 0, 1, "0100");
            var.linkId = settings.linkId;
            var.addressText = QString::number(0);
            shown.clear();
            row.prepare();
            const bool waits = (told(row.call) & ~row.differs) >> lock & 1;
            expectToWait(row.run, lock, waits, waits && lock > 0 && (row.differs & InList));
        }
    }
}
