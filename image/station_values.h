// SPDX-License-Identifier: MIT
/// \file
/// The values kept per station, used while CommSettings::multiStation is nonzero. The caller holds
/// imageMutex, except while a remote reply is stored.

#pragma once

#include <QtCore/QByteArray>

#include "../driver/export.h"

/// The index in extendList of the first record with this key; a record of four zero bytes is appended
/// when there is none. Constant time on average. The list is the truth: records that somebody appended there
/// directly are taken in, and a list that was cleared, filled again or not, is looked through anew. Keys
/// changed in their place are noticed when they are met, not always.
MODBUS_API int ExtendFindSameVar(int station, int area, int address);

namespace image {

/// The values of one station and area, asked for one after the other. What one reply or one panel made lies
/// side by side in extendList, so the index is asked for the first and seldom for the rest.
class StationRun
{
public:
    /// The record of the next value is expected `stride` records after the one before.
    StationRun(int station, int area, int stride = 1) : m_station(station), m_area(area), m_stride(stride) {}

    /// The value of a record, made when absent. The reference holds until extendList changes.
    QByteArray &value(int address);

private:
    const int m_station, m_area, m_stride;
    int m_position = -1; // of the record asked for last
};

} // namespace image
