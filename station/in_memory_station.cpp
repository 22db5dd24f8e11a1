// SPDX-License-Identifier: MIT
#include "in_memory_station.h"

#include <QtCore/QtEndian>

namespace {

typedef std::vector<quint16> Table;

enum Exception { IllegalFunction = 1, IllegalAddress = 2, IllegalValue = 3 };
enum { HeaderLength = 6, UnitAt = 6, PduAt = 7, ShortestRequest = 12 };

quint16 word(const QByteArray &bytes, int at)
{
    return qFromBigEndian<quint16>(bytes.constData() + at);
}

void append(QByteArray *bytes, int value)
{
    bytes->append(static_cast<char>(value >> 8 & 0xFF)).append(static_cast<char>(value & 0xFF));
}

QByteArray refuse(int function, Exception exception)
{
    return QByteArray(1, static_cast<char>(function | 0x80)).append(static_cast<char>(exception));
}

bool reaches(const Table &table, int address, int count)
{
    return static_cast<std::size_t>(address) + static_cast<std::size_t>(count) <= table.size();
}

QByteArray readBits(int function, const Table &table, int address, int count)
{
    if (count < 1 || count > 2000)
        return refuse(function, IllegalValue);
    if (!reaches(table, address, count))
        return refuse(function, IllegalAddress);
    QByteArray data((count + 7) / 8, '\0');
    const auto first = table.begin() + address;
    for (int i = 0; i < count; ++i)
        data[i / 8] = static_cast<char>(data.at(i / 8) | first[i] << i % 8);
    return QByteArray(1, static_cast<char>(function)).append(static_cast<char>(data.size())).append(data);
}

QByteArray readRegisters(int function, const Table &table, int address, int count)
{
    if (count < 1 || count > 125)
        return refuse(function, IllegalValue);
    if (!reaches(table, address, count))
        return refuse(function, IllegalAddress);
    QByteArray pdu(1, static_cast<char>(function));
    pdu.append(static_cast<char>(2 * count));
    const auto first = table.begin() + address;
    for (int k = 0; k < count; ++k)
        append(&pdu, first[k]);
    return pdu;
}

/// Coils take 0xFF00 and 0, registers anything.
QByteArray writeOne(const QByteArray &pdu, Table *table, bool isCoil)
{
    const int value = word(pdu, 3);
    if (isCoil && value != 0xFF00 && value != 0)
        return refuse(pdu.at(0), IllegalValue);
    if (!reaches(*table, word(pdu, 1), 1))
        return refuse(pdu.at(0), IllegalAddress);
    (*table)[word(pdu, 1)] = static_cast<quint16>(isCoil ? value != 0 : value);
    return pdu.left(5);
}

QByteArray writeMany(const QByteArray &pdu, Table *table)
{
    const int count = word(pdu, 3);
    const int data = 6;
    if (count < 1 || count > 123 || pdu.size() != data + 2 * count ||
        static_cast<quint8>(pdu.at(5)) != 2 * count)
        return refuse(pdu.at(0), IllegalValue);
    if (!reaches(*table, word(pdu, 1), count))
        return refuse(pdu.at(0), IllegalAddress);
    const auto first = table->begin() + word(pdu, 1);
    for (int k = 0; k < count; ++k)
        first[k] = word(pdu, data + 2 * k);
    return pdu.left(5);
}

QByteArray serve(InMemoryStation::Unit *unit, const QByteArray &pdu)
{
    const int function = static_cast<quint8>(pdu.at(0));
    switch (function) {
    case 1:
        return readBits(function, unit->coils, word(pdu, 1), word(pdu, 3));
    case 2:
        return readBits(function, unit->inputs, word(pdu, 1), word(pdu, 3));
    case 3:
        return readRegisters(function, unit->holdingRegisters, word(pdu, 1), word(pdu, 3));
    case 4:
        return readRegisters(function, unit->inputRegisters, word(pdu, 1), word(pdu, 3));
    case 5:
        return writeOne(pdu, &unit->coils, true);
    case 6:
        return writeOne(pdu, &unit->holdingRegisters, false);
    case 16:
        return writeMany(pdu, &unit->holdingRegisters);
    default:
        return refuse(function, IllegalFunction);
    }
}

} // namespace

InMemoryStation::InMemoryStation(std::initializer_list<int> units, int tableSize)
{
    const Table zeros(static_cast<std::size_t>(tableSize));
    for (int id : units)
        m_units[id] = Unit{zeros, zeros, zeros, zeros};
}

QByteArray InMemoryStation::reply(const QByteArray &request)
{
    if (request.size() < ShortestRequest || word(request, 2) != 0 ||
        word(request, 4) != request.size() - HeaderLength)
        return QByteArray();
    const QByteArray pdu = request.mid(PduAt);
    const int id = static_cast<quint8>(request.at(UnitAt));
    if (id == 0) {
        for (auto &unit : m_units)
            serve(&unit.second, pdu);
        return QByteArray();
    }
    const auto unit = m_units.find(id);
    if (unit == m_units.end())
        return QByteArray();
    const QByteArray answer = serve(&unit->second, pdu);
    QByteArray reply = request.left(4);
    append(&reply, answer.size() + 1);
    return reply.append(request.at(UnitAt)).append(answer);
}
