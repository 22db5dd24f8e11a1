// SPDX-License-Identifier: MIT
#include "unit_numbers.h"

#include <QtCore/QStringList>

std::optional<QList<int>> parseUnitNumbers(const QString &text)
{
    QList<int> units;
    for (const QString &word : text.split(QLatin1Char(','))) {
        const QStringList ends = word.split(QLatin1Char('-'));
        const int first = ends.first().toUShort();
        const int last = ends.last().toUShort();
        if (ends.size() > 2 || first < 1 || last > 255 || first > last)
            return std::nullopt;
        for (int unit = first; unit <= last; ++unit) {
            if (units.contains(unit))
                return std::nullopt;
            units << unit;
        }
    }
    return units;
}
