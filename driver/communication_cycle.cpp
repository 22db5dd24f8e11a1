// SPDX-License-Identifier: MIT
#include "api/host_calls.h"
#include "api/steps/driver_object.h"
#include "api/steps/request_builders.h"
#include "base/brief_lock.h"

using namespace modbus_driver;

namespace {

const int burstLimit = 5; // most consecutive calls that serve writes; the same limit for one-shot reads

bool isRemote()
{
    return PLC_driver.comInfo->remoteMode != 0;
}

void buildWrite(RW_VAR *var)
{
    if (isRemote())
        Remote_WriteVar(var);
    else
        WriteRegister(var);
}

void buildRead(RW_VAR *var)
{
    if (isRemote())
        Remote_ReadVar(var);
    else
        ReadRegister(var);
}

/// Moves entries of disabled stations to the end of the queue, until the station of the head is enabled. The
/// new order stays. False when every station of the queue is disabled.
bool moveEnabledStationToHead(QList<RW_VAR> *queue)
{
    for (int i = 0; i < queue->size(); ++i) {
        if (!Ethernetcontains(queue->at(0).station))
            return true;
        queue->move(0, queue->size() - 1);
    }
    return false;
}

/// Builds a request from the queue's head. False when every station of the queue is disabled.
bool serve(QList<RW_VAR> *queue, int kind, void (*build)(RW_VAR *))
{
    PLC_driver.currentKind = kind;
    if (!moveEnabledStationToHead(queue))
        return false;
    build(&queue->first());
    return true;
}

/// Serves the queue unless it is empty or its burst is over. The burst counts calls, not requests: a call
/// that builds none counts too.
bool serveInBurst(QList<RW_VAR> *queue, int kind, int *burst, void (*build)(RW_VAR *))
{
    if (queue->isEmpty() || *burst >= burstLimit)
        return false;
    const bool built = serve(queue, kind, build);
    ++*burst;
    return built;
}

void endBursts()
{
    PLC_driver.writeBurst = 0;
    PLC_driver.onceBurst = 0;
}

void chooseAndBuild()
{
    Modbus_TCPIP_RTU_M &driver = PLC_driver;
    if (serveInBurst(&driver.writeList, OriginWrite, &driver.writeBurst, buildWrite))
        return;
    if (serveInBurst(&driver.onceReadList, OriginOnceRead, &driver.onceBurst, buildRead))
        return;
    const bool polled = !driver.readList.isEmpty() && serve(&driver.readList, OriginPoll, buildRead);
    endBursts();
    if (!polled)
        driver.comInfo->cycleDone = 1;
}

} // namespace

Protocol *ComCommunication()
{
    QList<Protocol> &pending = PLC_driver.pendingList;
    if (!pending.isEmpty())
        return &pending.first();
    BriefLock lock(&PLC_driver.listMutex);
    chooseAndBuild();
    return pending.isEmpty() ? nullptr : &pending.first();
}
