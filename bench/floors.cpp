// SPDX-License-Identifier: MIT
#include "floors.h"

#include <QtCore/QMutexLocker>

#include <algorithm>
#include <cstring>

namespace bench {

namespace {

const int requestLength = 12;
const int dataOfReply = 9;
const int dataOfWrite = 13;

char low(int value)
{
    return static_cast<char>(value & 0xFF);
}

char high(int value)
{
    return static_cast<char>(value >> 8 & 0xFF);
}

/// The choice of a request takes two locks.
QByteArray requestUnderLocks(FloorState *floor, int size, int function, int start, int quantity)
{
    QMutexLocker lock(&floor->listMutex);
    {
        QMutexLocker stations(&floor->stationMutex);
    }
    QByteArray frame(size, '\0');
    char *at = frame.data();
    at[5] = low(size - 6);
    at[6] = 1;
    at[7] = low(function);
    at[8] = high(start);
    at[9] = low(start);
    at[10] = high(quantity);
    at[11] = low(quantity);
    return frame;
}

void turn(const char *from, char *to, int registers)
{
    for (int k = 0; k < registers; ++k, from += 2, to += 2) {
        to[0] = from[1];
        to[1] = from[0];
    }
}

int numberIn(const QString &digits)
{
    int number = 0;
    for (const QChar digit : digits)
        number = 10 * number + (digit.unicode() - '0');
    return number;
}

int firstRecord(const FloorState &floor, int area, int address)
{
    const RecordKey key = {1, area, address};
    return floor.places.value(key);
}

char *grown(QByteArray *out, int size)
{
    if (out->size() < size)
        out->resize(size);
    return out->data();
}

} // namespace

FloorState &freshFloor()
{
    static FloorState floor;
    floor.records = QList<EXTENDVAR>();
    floor.places = QHash<RecordKey, int>();
    floor.queue = QList<RW_VAR>();
    floor.frame = QByteArray();
    return floor;
}

void addRecords(FloorState *floor, int area, int start, int count, int step, int bytes)
{
    for (int k = 0; k < count; ++k) {
        EXTENDVAR record;
        record.station = 1;
        record.area = area;
        record.address = start + k * step;
        record.value = QByteArray(bytes, '\0');
        floor->places.insert({1, area, record.address}, floor->records.size());
        floor->records.append(record);
    }
}

void ask(FloorState *floor, int function, int start, int quantity)
{
    floor->frame = requestUnderLocks(floor, requestLength, function, start, quantity);
}

void askWrite(FloorState *floor, int start, const QByteArray &value)
{
    const int registers = value.size() / 2;
    QByteArray frame = requestUnderLocks(floor, dataOfWrite + value.size(), 16, start, registers);
    char *at = frame.data();
    at[12] = low(value.size());
    turn(value.constData(), at + dataOfWrite, registers);
    floor->frame = frame;
}

void mirrorRegisters(FloorState *floor, int start, const QByteArray &value)
{
    QMutexLocker lock(&floor->imageMutex);
    std::memcpy(floor->registers + start, value.constData(), static_cast<std::size_t>(value.size()));
}

void mirrorRecords(FloorState *floor, int start, const QByteArray &value)
{
    QMutexLocker lock(&floor->imageMutex);
    const int place = firstRecord(*floor, 5, start);
    for (int k = 0; k < value.size() / 2; ++k)
        std::memcpy(floor->records[place + k].value.data(), value.constData() + 2 * k, 2);
}

void answerBits(FloorState *floor, const QByteArray &reply, int start)
{
    QMutexLocker lock(&floor->listMutex);
    QMutexLocker image(&floor->imageMutex);
    std::memcpy(floor->bits + start / 8, reply.constData() + dataOfReply,
                static_cast<std::size_t>(reply.size() - dataOfReply));
    floor->frame.clear();
}

void answerRegisters(FloorState *floor, const QByteArray &reply, int start)
{
    QMutexLocker lock(&floor->listMutex);
    QMutexLocker image(&floor->imageMutex);
    turn(reply.constData() + dataOfReply, reinterpret_cast<char *>(floor->registers + start),
         (reply.size() - dataOfReply) / 2);
    floor->frame.clear();
}

void answerRecords(FloorState *floor, const QByteArray &reply, int area, int start)
{
    QMutexLocker lock(&floor->listMutex);
    QMutexLocker image(&floor->imageMutex);
    const bool bits = area < 2;
    int place = firstRecord(*floor, area, start);
    const char *from = reply.constData() + dataOfReply;
    const char *end = reply.constData() + reply.size();
    for (; from < end; from += bits ? 1 : 2) {
        char *to = floor->records[place++].value.data();
        to[0] = bits ? from[0] : from[1];
        if (!bits)
            to[1] = from[0];
    }
    floor->frame.clear();
}

void answerEcho(FloorState *floor)
{
    QMutexLocker lock(&floor->listMutex);
    floor->frame.clear();
}

void readRegisters(FloorState *floor, QString address, QByteArray *out, int count)
{
    const int start = numberIn(address);
    QMutexLocker lock(&floor->imageMutex);
    std::memcpy(grown(out, 2 * count), floor->registers + start, static_cast<std::size_t>(2 * count));
}

void readPairs(FloorState *floor, QString address, QByteArray *out, int pairs)
{
    const quint16 *from = floor->registers + numberIn(address);
    QMutexLocker lock(&floor->imageMutex);
    char *to = grown(out, 4 * pairs);
    for (int j = 0; j < pairs; ++j, from += 2, to += 4) {
        std::memcpy(to, from + 1, 2);
        std::memcpy(to + 2, from, 2);
    }
}

void readBits(FloorState *floor, QString address, QByteArray *out, int count)
{
    const int start = numberIn(address);
    QMutexLocker lock(&floor->imageMutex);
    char *to = grown(out, count);
    for (int bit = start; bit < start + count; ++bit)
        *to++ = floor->bits[bit / 8] >> bit % 8 & 1;
}

void readRecordRegisters(FloorState *floor, QString address, QByteArray *out, int count)
{
    const int start = numberIn(address);
    QMutexLocker lock(&floor->imageMutex);
    const int place = firstRecord(*floor, 5, start);
    char *to = grown(out, 2 * count);
    for (int k = 0; k < count; ++k)
        std::memcpy(to + 2 * k, floor->records.at(place + k).value.constData(), 2);
}

void readRecordPairs(FloorState *floor, QString address, QByteArray *out, int pairs)
{
    const int start = numberIn(address);
    QMutexLocker lock(&floor->imageMutex);
    const int place = firstRecord(*floor, 5, start);
    char *to = grown(out, 4 * pairs);
    for (int j = 0; j < pairs; ++j, to += 4) {
        std::memcpy(to, floor->records.at(place + 2 * j + 1).value.constData(), 2);
        std::memcpy(to + 2, floor->records.at(place + 2 * j).value.constData(), 2);
    }
}

void readRecordBits(FloorState *floor, QString address, QByteArray *out, int count)
{
    const int start = numberIn(address);
    QMutexLocker lock(&floor->imageMutex);
    const int place = firstRecord(*floor, 0, start & ~7);
    char *to = grown(out, count);
    for (int i = 0; i < count; ++i) {
        const int bit = start % 8 + i;
        to[i] = floor->records.at(place + bit / 8).value.at(0) >> bit % 8 & 1;
    }
}

void queue(FloorState *floor, QString address, const QByteArray &value)
{
    RW_VAR entry;
    entry.startAddress = numberIn(address);
    entry.data = QByteArray(value.constData(), value.size());
    QMutexLocker lock(&floor->listMutex);
    floor->queue.append(entry);
}

} // namespace bench
