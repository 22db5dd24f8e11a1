// SPDX-License-Identifier: MIT
#include "reply_storage.h"

#include "station_values.h"
#include "write_back.h"

#include "../driver/arithmetic.h"
#include "../driver/driver_object.h"
#include "../varlists/areas.h"

using arithmetic::wrapped;

namespace {

/// The data of a reply: bytes of bits, or registers high byte first.
class ReplyData
{
public:
    ReplyData(const QByteArray &reply, const Protocol &request)
        : m_reply(reply), m_header(request.replyHeaderLength),
          m_bytes(qBound(0, request.replyDataLength, 2 * image::registerCount))
    {
    }

    int byteCount() const { return m_bytes; }
    int registerCount() const { return m_bytes / 2; }
    bool hasByte(int j) const { return holds(qint64(m_header) + j); }
    bool hasRegister(int k) const
    {
        return holds(qint64(m_header) + 2 * k) && holds(qint64(m_header) + 2 * k + 1);
    }
    quint8 byte(int j) const { return static_cast<quint8>(m_reply.at(m_header + j)); }
    quint16 reg(int k) const { return static_cast<quint16>(byte(2 * k) << 8 | byte(2 * k + 1)); }

private:
    bool holds(qint64 index) const { return index >= 0 && index < m_reply.size(); }

    const QByteArray &m_reply;
    int m_header;
    int m_bytes;
};

/// Stores registers in an image array; the last one stored, or 0.
quint16 storeRegisters(const ReplyData &data, int start, quint16 *regs)
{
    quint16 last = 0;
    for (int k = 0; k < data.registerCount(); ++k) {
        const qint64 address = qint64(start) + k;
        if (!data.hasRegister(k))
            continue;
        last = data.reg(k);
        if (address >= 0 && address < image::registerCount)
            regs[address] = last;
    }
    return last;
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

/// The record touched last keeps the length of the whole data, or the list's first when none was.
void stretchLastTouched(QByteArray *touched, int size)
{
    if (!touched && !PLC_driver.extendList.isEmpty())
        touched = &PLC_driver.extendList[0].value;
    if (!touched)
        return;
    const int had = touched->size();
    if (size > had)
        touched->append(QByteArray(size - had, '\0'));
    else
        touched->truncate(size);
}

void storeStationBits(const ReplyData &data, const RW_VAR &var)
{
    QByteArray *value = nullptr;
    for (int j = 0; j < data.byteCount(); ++j) {
        value = &image::stationValue(var.station, var.area, wrapped(var.startAddress + qint64(8) * j));
        value->truncate(0);
        if (data.hasByte(j))
            value->append(static_cast<char>(data.byte(j)));
    }
    stretchLastTouched(value, data.byteCount());
}

/// The last register stored, or 0.
quint16 storeStationRegisters(const ReplyData &data, const RW_VAR &var, int area)
{
    QByteArray *value = nullptr;
    quint16 last = 0;
    for (int k = 0; k < data.registerCount(); ++k) {
        value = &image::stationValue(var.station, area, wrapped(qint64(var.startAddress) + k));
        value->truncate(0);
        if (!data.hasRegister(k))
            continue;
        last = data.reg(k);
        value->append(static_cast<char>(last & 0xFF)).append(static_cast<char>(last >> 8));
    }
    stretchLastTouched(value, data.byteCount());
    return last;
}

void storePerStation(const ReplyData &data, const RW_VAR &var)
{
    if (var.area == AreaHoldingRegisterBit)
        image::completeWriteBack(storeStationRegisters(data, var, AreaHoldingRegisters));
    else if (var.area < AreaHoldingRegisterBit)
        storeStationBits(data, var);
    else
        storeStationRegisters(data, var, var.area);
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
    if (request)
        image::completeWriteBack(
            storeRegisters(ReplyData(*reply, *request), request->var.startAddress, regs));
}

void SaveBitToUC(QByteArray *reply, unsigned char *bits)
{
    const Protocol *request = requestInFlight();
    if (!request)
        return;
    const ReplyData data(*reply, *request);
    const int start = request->var.startAddress;
    for (int j = 0; j < data.byteCount(); ++j) {
        const int byte = start / 8 + j;
        const bool inside = start + qint64(8) * j >= 0 && byte < image::bitBytes;
        if (inside && data.hasByte(j))
            bits[byte] = data.byte(j);
    }
}

void SaveWordToUS(QByteArray *reply, unsigned short *regs)
{
    const Protocol *request = requestInFlight();
    if (request)
        storeRegisters(ReplyData(*reply, *request), request->var.startAddress, regs);
}
