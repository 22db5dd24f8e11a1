// SPDX-License-Identifier: MIT
#include "station_values.h"

#include "../driver/api/codes.h"
#include "../driver/api/steps/driver_object.h"
#include "../driver/api/steps/image_access.h"
#include "../driver/base/arithmetic.h"
#include "../driver/base/brief_lock.h"

#include <cstring>

using namespace modbus_driver;

namespace {

void writeToImage(RW_VAR *var)
{
    const int start = var->startAddress;
    switch (var->area) {
    case AreaCoils:
        SetBitToUC(start, PLC_driver.coilBits, &var->data, var->dataLength);
        break;
    case AreaHoldingRegisterBit:
        SetBitToUS(start, PLC_driver.holdingRegisters, &var->data, var->dataLength);
        break;
    case AreaHoldingRegisters:
        SetWordToUS(start, PLC_driver.holdingRegisters, &var->data, var->dataLength);
        break;
    case AreaHoldingPairs:
        SetWordToUI(start, PLC_driver.holdingRegisters, &var->data, var->dataLength);
        break;
    default:
        break;
    }
}

char withBit(char byte, int mask, bool on)
{
    return static_cast<char>(on ? byte | mask : byte & ~mask);
}

/// A byte of 1 sets the bit, any other clears it. The record of a bit is also made when data has no byte for
/// the bit.
void writeStationCoils(const RW_VAR &var)
{
    StationValues values(var.station, AreaCoils);
    int position = StationValues::NoPosition;
    const int count = qMin(var.dataLength, int(ImageBits));
    for (int i = 0; i < count; ++i) {
        const qint64 bit = qint64(var.startAddress) + i;
        if (bit < 0)
            continue;
        QByteArray &value = values.value(wrapped(bit & ~qint64(7)), &position);
        if (value.isEmpty() || i >= var.data.size())
            continue;
        value[0] = withBit(value.at(0), 1 << (bit % 8), var.data.at(i) == 1);
        value.truncate(1);
    }
}

/// The start address alone selects byte and bit, for all elements. Bytes other than 0 and 1 change nothing.
void writeStationRegisterBits(const RW_VAR &var)
{
    if (var.startAddress < 0)
        return;
    const int byte = var.startAddress % 16 / 8;
    const int mask = 1 << (var.startAddress % 8);
    StationValues values(var.station, AreaHoldingRegisters);
    int position = StationValues::NoPosition;
    const int count = qMin(var.dataLength, int(ImageRegisterBits));
    for (int i = 0; i < count; ++i) {
        const qint64 reg = (qint64(var.startAddress) + i) / 16;
        QByteArray &value = values.value(wrapped(reg), &position);
        if (value.size() < 2 || i >= var.data.size())
            continue;
        const char wanted = var.data.at(i);
        if (wanted == 0 || wanted == 1)
            value[byte] = withBit(value.at(byte), mask, wanted == 1);
    }
}

void setRegister(QByteArray *value, const char *from)
{
    if (value->size() != 2)
        value->resize(2);
    std::memcpy(value->data(), from, 2);
}

/// Registers below address 0 are not written.
void writeStationRegisters(const RW_VAR &var)
{
    const int count = qMin(var.dataLength, var.data.size() / 2);
    const char *from = var.data.constData();
    StationValues values(var.station, AreaHoldingRegisters);
    int position = StationValues::NoPosition;
    for (int k = 0; k < count; ++k, ++position) {
        const qint64 reg = qint64(var.startAddress) + k;
        if (reg >= 0)
            setRegister(&values.value(wrapped(reg), &position), from + 2 * k);
    }
}

/// The low word is written first, as readStationPairs does. A pair that starts below address 0 is not
/// written.
void writeStationPairs(const RW_VAR &var)
{
    const int count = qMin(var.dataLength / 2, var.data.size() / 4);
    const char *from = var.data.constData();
    StationValues values(var.station, AreaHoldingRegisters);
    int low = StationValues::NoPosition, lowToHigh = 1;
    for (int j = 0; j < count; ++j, low += 2) {
        const qint64 first = qint64(var.startAddress) + 2 * j;
        if (first < 0)
            continue;
        setRegister(&values.value(wrapped(first + 1), &low), from + 4 * j);
        int high = low + lowToHigh;
        setRegister(&values.value(wrapped(first), &high), from + 4 * j + 2);
        lowToHigh = high - low;
    }
}

void writeToStation(const RW_VAR &var)
{
    switch (var.area) {
    case AreaCoils:
        writeStationCoils(var);
        break;
    case AreaHoldingRegisterBit:
        writeStationRegisterBits(var);
        break;
    case AreaHoldingRegisters:
        writeStationRegisters(var);
        break;
    case AreaHoldingPairs:
        writeStationPairs(var);
        break;
    default:
        break;
    }
}

} // namespace

void WriteDataToLocal(RW_VAR *var)
{
    BriefLock lock(&PLC_driver.imageMutex);
    if (PLC_driver.comInfo->multiStation == 0)
        writeToImage(var);
    else
        writeToStation(*var);
}
