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

QString tableLine(const QString &order, const QString &bytes, const QString &plain, const QString &withSign,
                  const QString &fraction, const QString &name)
{
    return QStringLiteral("%1  %2  %3  %4  %5  %6")
        .arg(order, -5)
        .arg(bytes, -11)
        .arg(plain, 10)
        .arg(withSign, 11)
        .arg(fraction, 14)
        .arg(name);
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
    const auto text = [](const char *latin1) { return QString::fromLatin1(latin1); };
    QStringList lines{tableLine(text("order"), text("bytes"), text("unsigned"), text("signed"), text("float"),
                                text("registers"))};
    for (pair.order = HighFirst; pair.order <= (LowRegisterFirst | LowByteFirst); ++pair.order) {
        const QByteArray ordered = QByteArray::fromHex(shown(ValueType::Hexadecimal).mid(2).toLatin1());
        lines << tableLine(orderName(pair.order, pair.width()),
                           text(ordered.toHex(' ').toUpper().constData()), shown(ValueType::Unsigned),
                           shown(ValueType::Signed), shown(ValueType::Float), text(registers[pair.order]));
    }
    return lines;
}

QStringList byteOrderTable(const Variable &variable, QByteArray value)
{
    for (int end = variable.width(); end <= value.size(); end += variable.width())
        std::reverse(value.begin() + end - variable.width(), value.begin() + end);
    return byteOrderTable(value);
}
