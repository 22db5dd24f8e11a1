// SPDX-License-Identifier: MIT
/// \file
/// Finds the end of a pass over the poll list. CommSettings::cycleDone stays 0 while any polled unit fails, so the
/// host looks for the first request that comes again.

#pragma once

#include "../../driver/api/records.h"

#include <set>
#include <tuple>

class PollPass
{
public:
    /// True when this poll request was served in this pass already. It then opens the next one.
    bool isOverAt(const RW_VAR &request)
    {
        const Place place = {request.station, request.area, request.startAddress};
        if (m_served.insert(place).second)
            return false;
        m_served = {place};
        return true;
    }
    /// The next request opens a pass.
    void restart() { m_served.clear(); }

private:
    using Place = std::tuple<int, int, int>; ///< unit, area, first address

    std::set<Place> m_served;
};
