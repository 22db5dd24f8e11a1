// SPDX-License-Identifier: MIT
/// \file
/// Finds the end of a pass over the poll list. CommSettings::cycleDone stays 0 while any polled unit fails, so the
/// host looks for the first request that comes again.

#pragma once

#include "../../driver/api/records.h"

#include <map>
#include <tuple>

class PollPass
{
public:
    /// True when this poll request was served in this pass already. It then opens the next one.
    bool isOverAt(const RW_VAR &request)
    {
        qint64 &servedIn = m_served[{request.station, request.area, request.startAddress}];
        const bool isOver = servedIn == m_pass;
        m_pass += isOver ? 1 : 0;
        servedIn = m_pass;
        return isOver;
    }
    /// The next request opens a pass.
    void restart() { ++m_pass; }

private:
    using Place = std::tuple<int, int, int>; ///< unit, area, first address

    std::map<Place, qint64> m_served; ///< the last pass of each request
    qint64 m_pass = 1;
};
