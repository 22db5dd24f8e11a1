// SPDX-License-Identifier: MIT
/// \file
/// Runs of bits or registers as they are requested, by which variables and requests are compared. Pure; any thread.

#pragma once

#include "variable.h"

#include "../../driver/api/records.h"

#include <map>
#include <tuple>
#include <vector>

/// Bits (areas coils and discrete inputs) or registers (input and holding registers); no other area is requested.
struct Span
{
    int unit = 0;
    int area = 0;
    int first = 0;
    int count = 0;

    int end() const { return first + count; }
};

/// The run that a variable lies in.
Span spanOf(const Variable &variable);
/// The run that a read request asks for.
Span spanOf(const RW_VAR &request);

/// Finds among many spans those that overlap one, without looking at each.
class SpanIndex
{
public:
    explicit SpanIndex(const std::vector<Span> &spans);

    /// Their positions in the list, in the order of their first addresses.
    std::vector<int> overlapping(const Span &span) const;

private:
    std::map<std::tuple<int, int, int, int>, Span> m_spans; ///< by unit, area, first address and position
    int m_longest = 0;                                      ///< most bits or registers of a span
};
