// SPDX-License-Identifier: MIT
#include "driver_checks.h"

#include "base/modbus_wire.h"
#include "base/remote_wire.h"

#include <new>

using namespace modbus_driver;

namespace {

bool isModbusFrame(const QByteArray &frame, const RW_VAR &var)
{
    if (frame.size() < wire::RequestLength || frame.left(4) != QByteArray(4, '\0') ||
        wire::wordAt(frame, wire::LengthAt) != ((frame.size() - wire::LengthFieldEnd) & 0xFFFF) ||
        frame.at(wire::UnitAt) != static_cast<char>(var.station))
        return false;
    const int function = wire::byteAt(frame, wire::FunctionAt);
    if (function != wire::WriteMultipleRegisters)
        return function >= wire::ReadCoils && function <= wire::WriteSingleRegister && frame.size() == wire::RequestLength;
    return frame.size() >= wire::WriteDataAt &&
           frame.at(wire::WriteByteCountAt) == static_cast<char>(2 * wire::wordAt(frame, wire::ValueAt)) &&
           (frame.size() - wire::WriteDataAt) / 2 <= qMax(0, var.dataLength);
}

bool isRemoteFrame(const QByteArray &frame, const RW_VAR &var)
{
    unsigned sum = 0;
    for (int i = 0; i + 1 < frame.size(); ++i)
        sum += static_cast<quint8>(frame.at(i));
    return frame.size() >= remoteWire::ShortestFrame && frame.at(0) == static_cast<char>(frame.size()) &&
           frame.at(remoteWire::StationAt) == static_cast<char>(var.station) &&
           frame.at(frame.size() - 1) == static_cast<char>(sum);
}

const char *brokenRequest(const Protocol &request)
{
    if (request.frameLength != request.frame.size())
        return "frameLength is not the frame's size";
    if (!isModbusFrame(request.frame, request.var) && !isRemoteFrame(request.frame, request.var))
        return "a frame is malformed";
    if ((request.var.station == 0) != (request.replyLength == 0) && request.replyDataLength >= 0)
        return "a broadcast expects a reply, or another request expects none";
    return nullptr;
}

const char *brokenPending(const QList<Protocol> &pending)
{
    if (pending.size() > 2 || (pending.size() == 2 && pending.at(0).var.subIndex != -1))
        return "more is in flight than one request and its second half";
    for (const Protocol &request : pending) {
        if (const char *broken = brokenRequest(request))
            return broken;
    }
    return nullptr;
}

const char *brokenCounter(const Modbus_TCPIP_RTU_M &driver, const CommSettings &settings)
{
    if (driver.writeBurst < 0 || driver.writeBurst > 5 || driver.onceBurst < 0 || driver.onceBurst > 5)
        return "a burst left 0 to 5";
    if (driver.cyclicDone < 0 || (!driver.readList.isEmpty() && driver.cyclicDone > driver.readList.size()))
        return "cyclicDone passed the poll list";
    if (settings.failCount < 0 || settings.failCount > qMax(0, settings.retryLimit))
        return "failCount passed the retry limit";
    if (!driver.pendingList.isEmpty() && settings.repliesReceived >= settings.repliesExpected)
        return "a request with all its replies is still in flight";
    return nullptr;
}

} // namespace

void freshDriver(CommSettings *settings)
{
    PLC_driver.~Modbus_TCPIP_RTU_M();
    new (&PLC_driver) Modbus_TCPIP_RTU_M();
    SetComInfo(settings);
}

const char *violatedInvariant(int forced)
{
    const Modbus_TCPIP_RTU_M &driver = PLC_driver;
    const int limit = QueueLimit + forced;
    if (driver.writeList.size() > limit || driver.onceReadList.size() > limit)
        return "a queue passed its limit";
    if (!driver.result.data.isEmpty())
        return "value bytes reached the result record";
    if (const char *broken = brokenPending(driver.pendingList))
        return broken;
    return brokenCounter(driver, *driver.comInfo);
}
