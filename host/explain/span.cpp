// SPDX-License-Identifier: MIT
#include "span.h"

#include "../../driver/api/codes.h"

using namespace modbus_driver;

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
        m_spans[{span.unit, span.area, span.first, static_cast<int>(m_spans.size())}] = span;
        m_longest = qMax(m_longest, span.count);
    }
}

std::vector<int> SpanIndex::overlapping(const Span &span) const
{
    const std::tuple end(span.unit, span.area, span.end(), 0);
    std::vector<int> found;
    auto at = m_spans.lower_bound({span.unit, span.area, span.first - m_longest, 0});
    for (; at != m_spans.end() && at->first < end; ++at) {
        if (at->second.end() > span.first)
            found.push_back(std::get<3>(at->first));
    }
    return found;
}
