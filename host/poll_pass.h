// SPDX-License-Identifier: MIT
/// \file
/// Tells one pass over the poll list from the next. The driver's own sign, CommSettings::cycleDone, stays 0
/// while any polled unit fails; so the host looks for the first request that comes round again.

#pragma once

#include "api/records.h"

#include <set>
#include <tuple>

class PollPass
{
public:
    /// True when this poll request was served in this pass already. It then opens the next one.
    bool isOverAt(const RW_VAR &request)
    {
        const auto isNew = m_served.insert({request.station, request.area, request.startAddress}).second;
        if (isNew)
            return false;
        m_served = {{request.station, request.area, request.startAddress}};
        return true;
    }
    /// The next request opens a pass.
    void restart() { m_served.clear(); }

private:
    std::set<std::tuple<int, int, int>> m_served;
};
