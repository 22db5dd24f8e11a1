// SPDX-License-Identifier: MIT
#include "bounds.h"
#include "station_values.h"

#include "../driver/api/codes.h"
#include "../driver/api/steps/image_access.h"
#include "../driver/base/arithmetic.h"
#include "../driver/base/byte_order.h"
#include "../driver/base/pending_requests.h"

#include <cstring>

using namespace modbus_driver;

namespace {

/// The data of a reply: the amount that the request expects, and the amount that the reply has.
class ReplyData
{
public:
    ReplyData(const QByteArray &reply, const Protocol &request)
        : byteCount(qBound(0, request.replyDataLength, 2 * ImageRegisters)), registerCount(byteCount / 2),
          bytesPresent(present(reply, request.replyHeaderLength)), registersPresent(bytesPresent / 2),
          bytes(reinterpret_cast<const uchar *>(reply.constData()) +
                (bytesPresent ? request.replyHeaderLength : 0))
    {
    }

    quint16 reg(int k) const { return static_cast<quint16>(bytes[2 * k] << 8 | bytes[2 * k + 1]); }
    quint16 lastRegister() const { return registersPresent > 0 ? reg(registersPresent - 1) : quint16(0); }

    const int byteCount, registerCount;
    const int bytesPresent, registersPresent;
    const uchar *const bytes; ///< bits, or registers high byte first

private:
    int present(const QByteArray &reply, int header) const
    {
        return header >= 0 && header < reply.size() ? qMin(byteCount, reply.size() - header) : 0;
    }
};

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "swapped registers are in native byte order");

void storeRegisters(const ReplyData &data, int start, quint16 *regs)
{
    const ClippedRange inside(start, data.registersPresent, ImageRegisters);
    if (inside.first < inside.end)
        swapRegisterBytes(regs + (start + inside.first), data.bytes + 2 * inside.first,
                          inside.end - inside.first);
}

void storeInImage(QByteArray *reply, int area)
{
    switch (area) {
    case AreaCoils:
        SaveBitToUC(reply, PLC_driver.coilBits);
        break;
    case AreaDiscreteInputs:
        SaveBitToUC(reply, PLC_driver.inputBits);
        break;
    case AreaHoldingRegisterBit:
        SpecialRegisterSave(reply, PLC_driver.holdingRegisters);
        break;
    case AreaInputRegisters:
        SaveWordToUS(reply, PLC_driver.inputRegisters);
        break;
    case AreaHoldingRegisters:
        SaveWordToUS(reply, PLC_driver.holdingRegisters);
        break;
    default:
        break;
    }
}

/// Resizes the value that was stored last to the length of the whole data. When no value was stored, resizes
/// the first one of extendList. Hosts rely on it.
void resizeLastStored(QByteArray *stored, int size)
{
    if (!stored && !PLC_driver.extendList.isEmpty())
        stored = &PLC_driver.extendList[0].value;
    if (!stored)
        return;
    const int oldSize = stored->size();
    stored->resize(size);
    if (size > oldSize)
        std::memset(stored->data() + oldSize, 0, static_cast<std::size_t>(size - oldSize));
}

/// Usually the value has this size already, from the reply before.
void setSize(QByteArray *value, int size)
{
    if (value->size() != size)
        value->resize(size);
}

void storeStationBits(const ReplyData &data, const RW_VAR &var)
{
    StationValues values(var.station, var.area);
    int position = StationValues::NoPosition;
    QByteArray *value = nullptr;
    const int groups = qMin(data.byteCount, int(ImageBitBytes));
    for (int j = 0; j < groups; ++j, ++position) {
        value = &values.value(wrapped(var.startAddress + qint64(8) * j), &position);
        setSize(value, j < data.bytesPresent ? 1 : 0);
        if (j < data.bytesPresent)
            *value->data() = static_cast<char>(data.bytes[j]);
    }
    resizeLastStored(value, data.byteCount);
}

void storeStationRegisters(const ReplyData &data, const RW_VAR &var, int area)
{
    StationValues values(var.station, area);
    int position = StationValues::NoPosition;
    QByteArray *value = nullptr;
    for (int k = 0; k < data.registerCount; ++k, ++position) {
        value = &values.value(wrapped(qint64(var.startAddress) + k), &position);
        setSize(value, k < data.registersPresent ? 2 : 0);
        if (k >= data.registersPresent)
            continue;
        char *to = value->data();
        to[0] = static_cast<char>(data.bytes[2 * k + 1]);
        to[1] = static_cast<char>(data.bytes[2 * k]);
    }
    resizeLastStored(value, data.byteCount);
}

void storePerStation(const ReplyData &data, const RW_VAR &var)
{
    if (var.area == AreaHoldingRegisterBit) {
        storeStationRegisters(data, var, AreaHoldingRegisters);
        completeWriteHalf(data.lastRegister());
    } else if (var.area < AreaHoldingRegisterBit) {
        storeStationBits(data, var);
    } else {
        storeStationRegisters(data, var, var.area);
    }
}

} // namespace

void SaveToLocalDataErea(QByteArray *reply)
{
    const Protocol *request = requestInFlight();
    if (!request)
        return;
    if (PLC_driver.comInfo->multiStation == 0)
        storeInImage(reply, request->var.area);
    else
        storePerStation(ReplyData(*reply, *request), request->var);
}

void SpecialRegisterSave(QByteArray *reply, unsigned short *regs)
{
    const Protocol *request = requestInFlight();
    if (!request)
        return;
    const ReplyData data(*reply, *request);
    storeRegisters(data, request->var.startAddress, regs);
    completeWriteHalf(data.lastRegister());
}

void SaveBitToUC(QByteArray *reply, unsigned char *bits)
{
    const Protocol *request = requestInFlight();
    if (!request)
        return;
    const ReplyData data(*reply, *request);
    const int start = request->var.startAddress;
    if (start < 0 && start % 8 != 0)
        return; // such a start is not at the first bit of a byte
    const ClippedRange inside(start / 8, data.bytesPresent, ImageBitBytes);
    if (inside.first < inside.end)
        std::memcpy(bits + (start / 8 + inside.first), data.bytes + inside.first,
                    static_cast<std::size_t>(inside.end - inside.first));
}

void SaveWordToUS(QByteArray *reply, unsigned short *regs)
{
    const Protocol *request = requestInFlight();
    if (request)
        storeRegisters(ReplyData(*reply, *request), request->var.startAddress, regs);
}
