// SPDX-License-Identifier: MIT
#include "driver_checks.h"

#include "base/block_checks.h"
#include "base/modbus_wire.h"
#include "base/remote_wire.h"

#include <new>

using namespace modbus_driver;

namespace {

bool isModbusFrame(const QByteArray &frame, const RW_VAR &var)
{
    const int size = frame.size(), function = wire::byteAt(frame, wire::FunctionAt);
    if (frame.left(wire::LengthAt) != QByteArray(wire::LengthAt, '\0') ||
        wire::wordAt(frame, wire::LengthAt) != ((size - wire::LengthFieldEnd) & 0xFFFF) ||
        wire::byteAt(frame, wire::UnitAt) != (var.station & 0xFF))
        return false;
    if (function != wire::WriteMultipleRegisters)
        return function >= wire::ReadCoils && function <= wire::WriteSingleRegister && size == wire::RequestLength;
    return size >= wire::WriteDataAt && (size - wire::WriteDataAt) / 2 <= qMax(0, var.dataLength) &&
           wire::byteAt(frame, wire::WriteByteCountAt) == (2 * wire::wordAt(frame, wire::ValueAt) & 0xFF);
}

bool isRemoteFrame(const QByteArray &frame, const RW_VAR &var)
{
    const int last = frame.size() - 1;
    const uchar *const bytes = reinterpret_cast<const uchar *>(frame.constData());
    return last + 1 >= remoteWire::ShortestFrame && bytes[remoteWire::LengthAt] == ((last + 1) & 0xFF) &&
           bytes[remoteWire::StationAt] == (var.station & 0xFF) &&
           bytes[last] == (byteSum(bytes, static_cast<unsigned>(last)) & 0xFF);
}

const char *brokenRequest(const Protocol &request)
{
    if (request.frameLength != request.frame.size())
        return "frameLength is not the frame's size";
    if (!isModbusFrame(request.frame, request.var) && !isRemoteFrame(request.frame, request.var))
        return "a frame is malformed";
    if ((request.var.station == StationBroadcast) != (request.replyLength == 0) && request.replyDataLength >= 0)
        return "a broadcast expects a reply, or another request expects none";
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
    const QList<Protocol> &pending = driver.pendingList;
    if (pending.size() > 2 || (pending.size() == 2 && pending.at(0).var.subIndex != SubIndexReadHalf))
        return "more is in flight than one request and its second half";
    for (const Protocol &request : pending) {
        if (const char *broken = brokenRequest(request))
            return broken;
    }
    return brokenCounter(driver, *driver.comInfo);
}
