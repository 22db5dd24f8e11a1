// SPDX-License-Identifier: MIT
#include "bounds.h"
#include "station_values.h"

#include "../driver/api/host_calls.h"
#include "../driver/api/steps/driver_object.h"
#include "../driver/api/steps/image_access.h"
#include "../driver/api/steps/list_building.h"
#include "../driver/base/arithmetic.h"
#include "../driver/base/brief_lock.h"
#include "../varlists/address_text.h"

#include <cstring>

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

/// The first value of a read of per-station values.
struct StationRead
{
    int station;
    int area;    ///< a request area: 0, 1, 4 or 5
    int address; ///< 0 or more: register * 16 + bit for bits of registers, else bit or register
};

/// How records keep bits.
struct BitRecords
{
    int bits; ///< bits in each record
    int step; ///< difference between the addresses of a record and the next
};
const BitRecords bitGroups = {8, 8}, registers = {16, 1};

void copyBits(const QByteArray &value, int offset, int count, char *to)
{
    for (int bit = offset; bit < offset + count; ++bit)
        *to++ = value.size() > bit / 8 && (value.at(bit / 8) >> (bit % 8) & 1) != 0;
}

void readStationBits(const StationRead &read, const BitRecords &records, QByteArray &out, int count)
{
    if (count < 1)
        return;
    char *to = ensureSize(out, count);
    StationValues values(read.station, read.area);
    int position = StationValues::NoPosition;
    int offset = read.address % records.bits;
    qint64 address = qint64(read.address / records.bits) * records.step;
    for (int done = 0; done < count; ++position) {
        const int some = qMin(count - done, records.bits - offset);
        copyBits(values.value(wrapped(address), &position), offset, some, to + done);
        done += some;
        offset = 0;
        address += records.step;
    }
}

/// inline: 3,367 instead of 3,755 instructions for 125 registers (driver-bench, panel_read).
inline void copyRegister(const QByteArray &value, char *to)
{
    if (value.size() >= 2)
        std::memcpy(to, value.constData(), 2);
    else
        std::memset(to, 0, 2);
}

void readStationRegisters(const StationRead &read, QByteArray &out, int count)
{
    if (count < 1)
        return;
    char *to = ensureSize(out, 2 * count);
    StationValues values(read.station, read.area);
    int position = StationValues::NoPosition;
    for (int k = 0; k < count; ++k, ++position)
        copyRegister(values.value(wrapped(qint64(read.address) + k), &position), to + 2 * k);
}

/// Unlike in the shared image, a single register gives nothing. The low word is read first. When this read
/// makes new records, the record of the high word follows that of the low word in the list.
void readStationPairs(const StationRead &read, QByteArray &out, int count)
{
    if (count < 2)
        return;
    const int pairs = count / 2;
    char *to = ensureSize(out, 4 * pairs);
    StationValues values(read.station, read.area);
    int low = StationValues::NoPosition, lowToHigh = 1;
    for (int j = 0; j < pairs; ++j, low += 2) {
        const qint64 first = qint64(read.address) + 2 * j;
        copyRegister(values.value(wrapped(first + 1), &low), to + 4 * j);
        int high = low + lowToHigh;
        copyRegister(values.value(wrapped(first), &high), to + 4 * j + 2);
        lowToHigh = high - low;
    }
}

/// Reads at most one whole table.
///
/// noinline: keeps its stack frame out of reads of the shared image. A read of one register then takes 260
/// instead of 277 instructions on ARM (driver-bench, panel_read/1_register/shared).
__attribute__((noinline)) void readStation(int area, int address, int station, QByteArray &out, int count)
{
    const StationRead read = {station, getPlcReg(area), address};
    const int most = qMin(count, int(ImageRegisters));
    switch (area) {
    case AreaCoils:
    case AreaDiscreteInputs:
        readStationBits(read, bitGroups, out, qMin(count, int(ImageBits)));
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
    BriefLock lock(&PLC_driver.imageMutex);
    if (PLC_driver.comInfo->multiStation == 0)
        readImage(area, address, out, count);
    else
        readStation(area, address, station, out, count);
    return 1;
}
