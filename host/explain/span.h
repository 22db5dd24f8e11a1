// SPDX-License-Identifier: MIT
/// \file
/// Runs of bits or registers as they are requested, by which variables and requests are compared. Pure; any thread.

#pragma once

#include "variable.h"

#include "../../driver/api/records.h"

/// Bits (areas coils and discrete inputs) or registers (input and holding registers); no other area is requested.
struct Span
{
    int unit = 0;
    int area = 0;
    int first = 0;
    int count = 0;

    int end() const { return first + count; }
    bool overlaps(const Span &other) const;
};

/// The run that a variable lies in.
Span spanOf(const Variable &variable);
/// The run that a read request asks for.
Span spanOf(const RW_VAR &request);
