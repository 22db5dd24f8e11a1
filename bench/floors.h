// SPDX-License-Identifier: MIT
// Floors: the cheapest code that moves the same bytes as the driver. A floor allocates the frame to send,
// takes the same locks and swaps the bytes of the same registers. It has no queue of requests, judges no
// reply and reads no settings. Values per station are in the same records as those of the driver.

#pragma once

#include "api/records.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMutex>

namespace bench {

/// The key of a record: its station, area and address.
struct RecordKey
{
    int station, area, address;
};

inline bool operator==(const RecordKey &a, const RecordKey &b)
{
    return a.address == b.address && a.station == b.station && a.area == b.area;
}

inline uint qHash(const RecordKey &key)
{
    const uint table = static_cast<uint>(key.station) * 31u + static_cast<uint>(key.area);
    return static_cast<uint>(key.address) + table * 0x9E3779B1u;
}

/// The data of the floors.
struct FloorState
{
    QMutex listMutex, imageMutex, stationMutex;
    quint8 bits[8193] = {};
    quint16 registers[65536] = {};
    QList<EXTENDVAR> records; ///< in order of address for each call of addRecords
    QHash<RecordKey, int> places;
    QList<RW_VAR> queue;
    QByteArray frame; ///< in flight
};

FloorState &freshFloor();

/// Records of `bytes` bytes for `count` addresses of station 1, from `start` on and `step` apart.
void addRecords(FloorState *floor, int area, int start, int count, int step, int bytes);

/// Build the request of a read, or of a write of the registers in `value`.
void ask(FloorState *floor, int function, int start, int quantity);
void askWrite(FloorState *floor, int start, const QByteArray &value);
/// Store written registers in the image or in records, where panels read them.
void mirrorRegisters(FloorState *floor, int start, const QByteArray &value);
void mirrorRecords(FloorState *floor, int start, const QByteArray &value);

/// Store the data of a reply.
void answerBits(FloorState *floor, const QByteArray &reply, int start);
void answerRegisters(FloorState *floor, const QByteArray &reply, int start);
void answerRecords(FloorState *floor, const QByteArray &reply, int area, int start);
void answerEcho(FloorState *floor);

/// Read values for a panel, in the same bytes as GetRegisterData. `pairs` counts 32-bit values.
void readRegisters(FloorState *floor, QString address, QByteArray *out, int count);
void readPairs(FloorState *floor, QString address, QByteArray *out, int pairs);
void readBits(FloorState *floor, QString address, QByteArray *out, int count);
void readRecordRegisters(FloorState *floor, QString address, QByteArray *out, int count);
void readRecordPairs(FloorState *floor, QString address, QByteArray *out, int pairs);
void readRecordBits(FloorState *floor, QString address, QByteArray *out, int count);

/// Appends one access of a panel to a queue, with a copy of the value.
void queue(FloorState *floor, QString address, const QByteArray &value);

} // namespace bench
