// SPDX-License-Identifier: MIT
#include "communication_cycle.h"

#include "driver_object.h"
#include "stations.h"

#include "../frames/read_requests.h"
#include "../frames/write_requests.h"
#include "../varlists/remote_frames.h"

#include <QtCore/QMutexLocker>

namespace {

const int burstLimit = 5; // rounds in a row of writes, and of one-shot reads

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

/// Moves entries of switched-off stations to the end, for good, until the head's station is on. False
/// when every station is off.
bool bringServedStationToHead(QList<RW_VAR> *queue)
{
    for (int i = 0; i < queue->size(); ++i) {
        if (!Ethernetcontains(queue->at(0).station))
            return true;
        queue->move(0, queue->size() - 1);
    }
    return false;
}

/// One round of a queue: builds from its head. False when there was no station to ask.
bool serve(QList<RW_VAR> *queue, int kind, void (*build)(RW_VAR *))
{
    PLC_driver.currentKind = kind;
    if (!bringServedStationToHead(queue))
        return false;
    build(&queue->first());
    return true;
}

/// A burst counts rounds, whether or not a request came of them.
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
    QMutexLocker lock(&PLC_driver.listMutex);
    chooseAndBuild();
    return pending.isEmpty() ? nullptr : &pending.first();
}
