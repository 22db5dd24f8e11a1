// SPDX-License-Identifier: MIT
// Floors: the cheapest code that moves the same bytes as the driver does. They allocate the frames that go
// out, take and release the same locks and turn the same registers round. They keep no queue of requests,
// judge no reply and look at no settings. Values of a station lie in the records that hosts know.

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

/// What floors work on.
struct FloorState
{
    QMutex listMutex, imageMutex, stationMutex;
    quint8 bits[8193] = {};
    quint16 registers[65536] = {};
    QList<EXTENDVAR> records; ///< those of one run follow each other
    QHash<RecordKey, int> places;
    QList<RW_VAR> queue;
    QByteArray frame; ///< in flight
};

FloorState &freshFloor();

/// Records of `bytes` bytes for `count` addresses of station 1, from `start` on and `step` apart.
void addRecords(FloorState *floor, int area, int start, int count, int step, int bytes);

/// The request of a read, or of a write of the registers in `value`.
void ask(FloorState *floor, int function, int start, int quantity);
void askWrite(FloorState *floor, int start, const QByteArray &value);
/// What was written is what screens see from now on: in the image, or in records.
void mirrorRegisters(FloorState *floor, int start, const QByteArray &value);
void mirrorRecords(FloorState *floor, int start, const QByteArray &value);

/// The reply's data to its place.
void answerBits(FloorState *floor, const QByteArray &reply, int start);
void answerRegisters(FloorState *floor, const QByteArray &reply, int start);
void answerRecords(FloorState *floor, const QByteArray &reply, int area, int start);
void answerEcho(FloorState *floor);

/// What a panel reads, in bytes as GetRegisterData gives them. Pairs are counted in values.
void readRegisters(FloorState *floor, QString address, QByteArray *out, int count);
void readPairs(FloorState *floor, QString address, QByteArray *out, int pairs);
void readBits(FloorState *floor, QString address, QByteArray *out, int count);
void readRecordRegisters(FloorState *floor, QString address, QByteArray *out, int count);
void readRecordPairs(FloorState *floor, QString address, QByteArray *out, int pairs);
void readRecordBits(FloorState *floor, QString address, QByteArray *out, int count);

/// What a panel asks for: one entry at the end of a queue, with a copy of the value.
void queue(FloorState *floor, QString address, const QByteArray &value);

} // namespace bench
