// SPDX-License-Identifier: MIT
#include "byte_orders.h"

#include "value_text.h"

#include <algorithm>

namespace {

/// By ByteOrder's flags.
const char *const registers[] = {
    "high register first: the driver's order",
    "low register first",
    "high register first, bytes swapped in each",
    "low register first, bytes swapped in each",
};

const char row[] = "%-5s  %-11s  %10s  %11s  %14s  %s";

} // namespace

QStringList byteOrderTable(QByteArray bytes, int width)
{
    for (int end = width; end <= bytes.size(); end += width)
        std::reverse(bytes.begin() + end - width, bytes.begin() + end);
    std::reverse(bytes.begin(), bytes.end()); // the driver's host-side layout of a pair
    Variable pair;
    pair.area = modbus_driver::AreaHoldingPairs;
    const auto shown = [&pair, &bytes](ValueType type) {
        pair.type = type;
        return valueText(pair, bytes).toLatin1();
    };
    QStringList lines{QString::asprintf(row, "order", "bytes", "unsigned", "signed", "float", "registers")};
    for (pair.order = HighFirst; pair.order <= (LowRegisterFirst | LowByteFirst); ++pair.order) {
        const QByteArray ordered = QByteArray::fromHex(shown(ValueType::Hexadecimal).mid(2));
        lines << QString::asprintf(
            row, qPrintable(orderName(pair.order, pair.width())), ordered.toHex(' ').toUpper().constData(),
            shown(ValueType::Unsigned).constData(), shown(ValueType::Signed).constData(),
            shown(ValueType::Float).constData(), registers[pair.order]);
    }
    return lines;
}
