// SPDX-License-Identifier: MIT
#include "byte_orders.h"

#include "filled.h"
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

QString tableLine(const QString &order, const QString &bytes, const QString &plain, const QString &withSign,
                  const QString &fraction, const char *name)
{
    return filled("%1  %2  %3  %4  %5  %6", order.leftJustified(5), bytes.leftJustified(11),
                  plain.rightJustified(10), withSign.rightJustified(11), fraction.rightJustified(14), name);
}

} // namespace

QStringList byteOrderTable(QByteArray bytes)
{
    std::reverse(bytes.begin(), bytes.end()); // the driver's host-side layout
    Variable pair;
    pair.area = modbus_driver::AreaHoldingPairs;
    const auto shown = [&pair, &bytes](ValueType type) {
        pair.type = type;
        return valueText(pair, bytes);
    };
    QStringList lines{tableLine(asText("order"), asText("bytes"), asText("unsigned"), asText("signed"),
                                asText("float"), "registers")};
    for (pair.order = HighFirst; pair.order <= (LowRegisterFirst | LowByteFirst); ++pair.order) {
        const QByteArray ordered = QByteArray::fromHex(shown(ValueType::Hexadecimal).mid(2).toLatin1());
        lines << tableLine(orderName(pair.order, pair.width()),
                           QString::fromLatin1(ordered.toHex(' ').toUpper()), shown(ValueType::Unsigned),
                           shown(ValueType::Signed), shown(ValueType::Float), registers[pair.order]);
    }
    return lines;
}

QStringList byteOrderTable(const Variable &variable, QByteArray value)
{
    for (int end = variable.width(); end <= value.size(); end += variable.width())
        std::reverse(value.begin() + end - variable.width(), value.begin() + end);
    return byteOrderTable(value);
}
