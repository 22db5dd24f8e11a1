// SPDX-License-Identifier: MIT
/// \file
/// The values kept per station, used while CommSettings::multiStation is nonzero. The caller holds imageMutex, except
/// while a remote reply is stored.

#pragma once

#include <QtCore/QByteArray>

namespace modbus_driver {

/// Values of one station and area, asked for one after the other while extendList belongs to the caller. Records that
/// replies and panels made are neighbours in the list, so the index is asked for the first and seldom for the rest.
class StationValues
{
public:
    /// `area` is a request area: 0, 1, 4 or 5. Looks whether the list was cleared since.
    StationValues(int station, int area);

    /// As ExtendFindSameVar.
    int position(int address);

    /// The value of that record. The reference is valid until extendList changes.
    QByteArray &value(int address);

private:
    const int m_station, m_area;
    int m_foundAt, m_foundAddress; // position and address of the record found last
};

} // namespace modbus_driver
