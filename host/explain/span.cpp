// SPDX-License-Identifier: MIT
#include "span.h"

#include "../../driver/api/codes.h"

using namespace modbus_driver;

bool Span::overlaps(const Span &other) const
{
    return unit == other.unit && area == other.area && first < other.end() && other.first < end();
}

Span spanOf(const Variable &variable)
{
    const int area = requestArea(variable.area);
    if (!isBitOfRegister(variable.area))
        return {variable.unit, area, variable.address, variable.driverCount()};
    const int firstRegister = variable.address / BitsOfRegister;
    const int lastRegister = (variable.address + variable.count - 1) / BitsOfRegister;
    return {variable.unit, area, firstRegister, lastRegister - firstRegister + 1};
}

Span spanOf(const RW_VAR &request)
{
    const int perLength = isBitArea(request.area) ? 8 : 1; // bits are requested in whole bytes
    return {request.station, request.area, request.startAddress, request.dataLength * perLength};
}
