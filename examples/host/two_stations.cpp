// SPDX-License-Identifier: MIT
// A host with a communication thread and a panel thread, which loads the driver at run time. It polls units
// 1, 2 and 3 behind one address, writes a 32-bit value to unit 1 and a bit of a register to unit 2, and
// shows what it read back. A unit that does not answer is left out for a while. At the end it starts anew,
// as for another project.
//   two-stations LIBRARY ADDRESS PORT
#include "link.h"
#include "start_anew.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QMap>
#include <QtCore/QThread>

#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

using namespace modbus_driver;

namespace {

// A name of the library: a function or an object of whatever type it is put into.
struct Symbol
{
    template <typename Type> operator Type *() const { return reinterpret_cast<Type *>(address); }

    void *address;
};

// What this host uses of the driver, looked up by name. RTLD_LOCAL: no name of the driver gets in the way
// of others. The library is never unloaded.
struct Driver
{
    explicit Driver(const char *path) : library(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {}

    Symbol find(const char *name) const
    {
        void *const found = library ? dlsym(library, name) : nullptr;
        if (found)
            return {found};
        std::fprintf(stderr, "two-stations: %s\n", dlerror());
        std::exit(EXIT_FAILURE);
    }

    void *const library;
    decltype(&SetComInfo) setComInfo = find("SetComInfo");
    decltype(&RegistCallBackFuncIntf) registerCallBacks = find("RegistCallBackFuncIntf");
    decltype(&ReCreatReadVarList) recreateReadList = find("ReCreatReadVarList");
    decltype(&ComCommunication) nextRequest = find("ComCommunication");
    decltype(&DataCom) handReply = find("DataCom");
    decltype(&EnCommStation) enableStation = find("EnCommStation");
    decltype(&Ethernetcontains) isOff = find("Ethernetcontains");
    decltype(&GetRegisterData) getRegisterData = find("GetRegisterData");
    decltype(&SetRegisterData) setRegisterData = find("SetRegisterData");
    Modbus_TCPIP_RTU_M *object = find("PLC_driver");
};

enum { Value = 1, Bit = 2, Items = 3 }; // the host's numbers of its two writes: hostItem

std::atomic<bool> ended(false);
std::atomic<int> outcomes[Items]; // of writeDone
std::atomic<int> goodReads[256];  // of each unit

// Call-backs run with the queues locked: they only leave a note.
void writeDone(int, int, int item, int outcome)
{
    if (item == Value || item == Bit)
        outcomes[item] = outcome;
}

void itemNotify(QList<RW_VAR> *, int, int) {}

// Leaves out a unit that does not answer, and tries it again later.
class Absent
{
public:
    explicit Absent(const Driver &driver) : driver(driver) {}

    void leaveOut(int unit)
    {
        std::printf("unit %d does not answer\n", unit);
        driver.enableStation(unit, 0);
        since[unit].start();
    }

    void tryAgain()
    {
        for (int unit : since.keys()) {
            if (!since[unit].hasExpired(10000))
                continue;
            driver.enableStation(unit, 1);
            since.remove(unit);
        }
    }

private:
    const Driver &driver;
    QMap<int, QElapsedTimer> since;
};

// The communication thread.
void communicate(const Driver &driver, CommSettings &settings, const QString &address, quint16 port)
{
    Link link(address, port); // in the thread that uses it
    Absent absent(driver);
    for (; !ended; absent.tryAgain()) {
        Protocol *request = driver.nextRequest();
        if (!request) {
            QThread::msleep(10); // until a screen wants something
            continue;
        }
        const RW_VAR asked = request->var; // DataCom may end the request, and its result names no failed one
        QByteArray reply = link.exchange(*request);
        const int status = driver.handReply(&reply, reply.size())->status;
        if (status == StatusDone || status == StatusRemoteAccepted) {
            settings.failCount = 0;
            goodReads[asked.station & 0xFF] +=
                asked.rwFlag == AccessRead && asked.subIndex != SubIndexReadHalf;
        } else if (status != StatusRetry && reply.isEmpty()) {
            absent.leaveOut(asked.station);
        }
        QThread::msleep(5); // the stations' pause between two requests
    }
}

VAR_ITEM variable(int station, int area, const char *address, int count)
{
    VAR_ITEM item;
    item.station = quint8(station);
    item.area = quint8(area);
    item.addressText = QString::fromLatin1(address);
    item.count = count;
    return item;
}

QByteArray valueOf(const Driver &driver, const VAR_ITEM &item)
{
    QByteArray value;
    driver.getRegisterData(0, item.area, item.addressText, item.station, value, item.count);
    return value;
}

// Waits for something that the communication thread brings about, ten seconds at most.
template <typename Condition> void waitFor(Condition condition)
{
    QElapsedTimer timer;
    for (timer.start(); !condition() && timer.elapsed() < 10000;)
        QThread::msleep(10);
}

// The panel thread. True when both writes were done, and show in what was read after them.
bool panel(const Driver &driver, const VAR_ITEM &number, const VAR_ITEM &bit)
{
    QByteArray value(4, '\0'), on(1, '\1');
    qToLittleEndian<quint32>(305419896, value.data());
    driver.setRegisterData(QString(), number.area, number.addressText, number.station, value, 2, 0, Value);
    driver.setRegisterData(QString(), bit.area, bit.addressText, bit.station, on, 1, 0, Bit);
    waitFor([] { return outcomes[Value] != 0 && outcomes[Bit] != 0; });

    // The image shows a value that is on its way, and keeps one that was not written, until the station was
    // read.
    const int readsOf1 = goodReads[1], readsOf2 = goodReads[2];
    waitFor([&] { return goodReads[1] != readsOf1 && goodReads[2] != readsOf2; });
    const bool read = goodReads[1] != readsOf1 && goodReads[2] != readsOf2;
    const QByteArray shown = valueOf(driver, number), shownBit = valueOf(driver, bit);
    std::printf("%s: unit 1 value %u, unit 2 bit %d\n", read ? "read back" : "not read back",
                qFromLittleEndian<quint32>(shown.constData()), shownBit.at(0));
    waitFor([&] { return driver.isOff(3); });
    return outcomes[Value] == WriteDoneServed && outcomes[Bit] == WriteDoneServed && read && shown == value &&
           shownBit == on;
}

// What the old project has queued must not reach the new one's stations.
bool startsAnew(const Driver &driver, CommSettings &settings, const VAR_ITEM &number)
{
    QByteArray unsent(4, '\1');
    driver.setRegisterData(QString(), number.area, number.addressText, number.station, unsent, 2, 0, Value);
    startAnew(*driver.object, settings);
    return driver.nextRequest() == nullptr && valueOf(driver, number) == QByteArray(4, '\0');
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: two-stations LIBRARY ADDRESS PORT\n");
        return EXIT_FAILURE;
    }
    const Driver driver(argv[1]);
    static CommSettings settings;  // the driver keeps a pointer to it
    settings.writeBlockSize = 100; // even: no 32-bit value is cut in two
    settings.retryLimit = 1;
    settings.multiStation = 1; // values are kept per unit
    settings.writeMode = WriteModeToStation;
    driver.setComInfo(&settings);
    driver.registerCallBacks(writeDone, itemNotify);

    const VAR_ITEM number = variable(1, AreaHoldingPairs, "100", 2);
    const VAR_ITEM bit = variable(2, AreaHoldingRegisterBit, "20.3", 1);
    QList<VAR_ITEM> items = {number, bit, variable(3, AreaHoldingRegisters, "0", 1)};
    driver.recreateReadList(&items);

    std::thread communication(
        [&] { communicate(driver, settings, QString::fromLatin1(argv[2]), quint16(std::atoi(argv[3]))); });
    const bool written = panel(driver, number, bit); // this thread is the panel's
    ended = true;
    communication.join(); // before main returns, for then the driver object is destroyed
    const bool anew = startsAnew(driver, settings, number);
    std::printf("started anew: %s\n", anew ? "nothing is left" : "something is left");
    return written && anew ? EXIT_SUCCESS : EXIT_FAILURE;
}
