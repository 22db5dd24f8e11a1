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

/// Values of one station and area, asked for one after the other while extendList belongs to the caller. What
/// replies and panels made lies side by side, so the index is asked for the first and seldom for the rest.
class StationValues
{
public:
    /// `area` is a request area: 0, 1, 4 or 5. Looks whether the list was cleared since.
    StationValues(int station, int area);

    /// As ExtendFindSameVar.
    int position(int address);

    /// The value of that record. The reference holds until extendList changes.
    QByteArray &value(int address);

private:
    const int m_station, m_area;
    int m_foundAt, m_foundAddress; // position and address of the record found last
};

} // namespace image
