// SPDX-License-Identifier: MIT
/// \file
/// What of an access lies inside an image array. Pure arithmetic.

#pragma once

#include <QtCore/QtGlobal>

namespace image {

/// `count` elements from `start` on, cut to a table of `table` elements and to no more than that many:
/// elements `first` up to, not including, `end` lie inside; those ahead of `first` lie below address 0.
struct Inside
{
    Inside(int start, int count, int table)
        : end(static_cast<int>(qBound<qint64>(0, qint64(table) - start, qBound(0, count, table)))),
          first(static_cast<int>(qBound<qint64>(0, -qint64(start), end)))
    {
    }

    int end;
    int first;
};

} // namespace image
