// SPDX-License-Identifier: MIT
#include "bounds.h"
#include "station_values.h"

#include "../driver/api/host_calls.h"
#include "../driver/api/steps/driver_object.h"
#include "../driver/api/steps/image_access.h"
#include "../driver/api/steps/list_building.h"
#include "../driver/base/arithmetic.h"
#include "../varlists/address_text.h"

#include <QtCore/QMutexLocker>

using namespace modbus_driver;

namespace {

void readImage(int area, int address, QByteArray &out, int count)
{
    switch (area) {
    case AreaCoils:
        GetBitFromUC(out, PLC_driver.coilBits, address, count);
        break;
    case AreaDiscreteInputs:
        GetBitFromUC(out, PLC_driver.inputBits, address, count);
        break;
    case AreaInputRegisterBit:
        GetBitFromUS(out, PLC_driver.inputRegisters, address, count);
        break;
    case AreaHoldingRegisterBit:
        GetBitFromUS(out, PLC_driver.holdingRegisters, address, count);
        break;
    case AreaInputRegisters:
        GetWordFromUS(out, PLC_driver.inputRegisters, address, count);
        break;
    case AreaHoldingRegisters:
        GetWordFromUS(out, PLC_driver.holdingRegisters, address, count);
        break;
    case AreaInputPairs:
        GetWordFromUI(out, PLC_driver.inputRegisters, address, count);
        break;
    case AreaHoldingPairs:
        GetWordFromUI(out, PLC_driver.holdingRegisters, address, count);
        break;
    default:
        break;
    }
}

/// Where one read of per-station values looks: a station, a request area, an address in the area's unit.
struct StationRead
{
    int station;
    int area;
    qint64 address;
};

/// How bits are kept in records: `bits` of them in each, `bitsPerAddress` for each step of its address.
struct BitRecords
{
    int bits;
    int bitsPerAddress;
};
const BitRecords eightBits = {8, 1}, registers = {16, 16};

void readStationBits(const StationRead &read, const BitRecords &records, QByteArray &out, int count)
{
    if (count < 1)
        return;
    char *to = ensureSize(out, count);
    StationValues values(read.station, read.area);
    const QByteArray *value = nullptr;
    for (int i = 0; i < count; ++i) {
        const qint64 bit = read.address + i;
        const int offset = static_cast<int>(bit % records.bits);
        if (!value || offset == 0)
            value = &values.value(wrapped((bit - offset) / records.bitsPerAddress));
        const int byte = offset / 8;
        to[i] = value->size() > byte && (value->at(byte) >> (offset % 8) & 1) != 0;
    }
}

void copyRegister(StationValues *values, qint64 address, char *to)
{
    const QByteArray &value = values->value(wrapped(address));
    const bool known = value.size() >= 2;
    to[0] = known ? value.at(0) : '\0';
    to[1] = known ? value.at(1) : '\0';
}

void readStationRegisters(const StationRead &read, QByteArray &out, int count)
{
    if (count < 1)
        return;
    char *to = ensureSize(out, 2 * count);
    StationValues values(read.station, read.area);
    for (int k = 0; k < count; ++k)
        copyRegister(&values, read.address + k, to + 2 * k);
}

/// A single register gives nothing here, unlike in the shared image. Two cursors: each predicts ascending addresses
/// only.
void readStationPairs(const StationRead &read, QByteArray &out, int count)
{
    if (count < 2)
        return;
    const int pairs = count / 2;
    char *to = ensureSize(out, 4 * pairs);
    StationValues low(read.station, read.area), high(read.station, read.area);
    for (int j = 0; j < pairs; ++j) {
        copyRegister(&low, read.address + 2 * j + 1, to + 4 * j);
        copyRegister(&high, read.address + 2 * j, to + 4 * j + 2);
    }
}

/// No count reaches further than a whole table. noinline: keeps its stack frame out of reads of the shared image.
__attribute__((noinline)) void readStation(int area, int address, int station, QByteArray &out, int count)
{
    const StationRead read = {station, getPlcReg(area), address};
    const int most = qMin(count, int(ImageRegisters));
    switch (area) {
    case AreaCoils:
    case AreaDiscreteInputs:
        readStationBits(read, eightBits, out, qMin(count, int(ImageBits)));
        break;
    case AreaInputRegisterBit:
    case AreaHoldingRegisterBit:
        readStationBits(read, registers, out, qMin(count, int(ImageRegisterBits)));
        break;
    case AreaInputRegisters:
    case AreaHoldingRegisters:
        readStationRegisters(read, out, most);
        break;
    case AreaInputPairs:
    case AreaHoldingPairs:
        readStationPairs(read, out, most);
        break;
    default:
        break;
    }
}

} // namespace

int GetRegisterData(int, int area, QString addressText, int station, QByteArray &out, int count)
{
    const int address = addressOf(area, addressText);
    if (address < 0)
        return 0;
    QMutexLocker lock(&PLC_driver.imageMutex);
    if (PLC_driver.comInfo->multiStation == 0)
        readImage(area, address, out, count);
    else
        readStation(area, address, station, out, count);
    return 1;
}
