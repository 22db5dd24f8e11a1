// SPDX-License-Identifier: MIT
#include "span.h"

#include "../../driver/api/codes.h"

#include <algorithm>
#include <tuple>

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

SpanIndex::SpanIndex(const std::vector<Span> &spans)
{
    for (const Span &span : spans) {
        m_entries.push_back({span, static_cast<int>(m_entries.size())});
        m_longest = std::max(m_longest, span.count);
    }
    std::stable_sort(m_entries.begin(), m_entries.end(),
                     [](const Entry &a, const Entry &b) { return isBefore(a, b.span); });
}

bool SpanIndex::isBefore(const Entry &entry, const Span &span)
{
    return std::tie(entry.span.unit, entry.span.area, entry.span.first) <
           std::tie(span.unit, span.area, span.first);
}

std::vector<int> SpanIndex::overlapping(const Span &span) const
{
    const Span first = {span.unit, span.area, span.first - m_longest, 0};
    const Span end = {span.unit, span.area, span.end(), 0};
    std::vector<int> found;
    for (auto at = std::lower_bound(m_entries.begin(), m_entries.end(), first, isBefore);
         at != m_entries.end() && isBefore(*at, end); ++at) {
        if (at->span.overlaps(span))
            found.push_back(at->position);
    }
    return found;
}
