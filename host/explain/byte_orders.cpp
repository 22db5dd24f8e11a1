// SPDX-License-Identifier: MIT
#include "byte_orders.h"

#include "value_text.h"

#include <QtCore/QtEndian>

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

QStringList byteOrderTable(const QByteArray &bytes)
{
    const auto text = [](const char *latin1) { return QString::fromLatin1(latin1); };
    QStringList lines{tableLine(text("order"), text("bytes"), text("unsigned"), text("signed"), text("float"),
                                text("registers"))};
    for (int order = HighFirst; order <= (LowRegisterFirst | LowByteFirst); ++order) {
        const quint32 number = reordered(qFromBigEndian<quint32>(bytes.constData()), order);
        const quint32 ordered = qToBigEndian(number);
        const QByteArray hex =
            QByteArray(reinterpret_cast<const char *>(&ordered), sizeof ordered).toHex(' ');
        lines << tableLine(orderName(order, sizeof ordered), text(hex.toUpper().constData()),
                           QString::number(number), QString::number(static_cast<qint32>(number)),
                           floatText(number), text(registers[order]));
    }
    return lines;
}

QStringList byteOrderTable(const Variable &variable, QByteArray value)
{
    for (int end = variable.width(); end <= value.size(); end += variable.width())
        std::reverse(value.begin() + end - variable.width(), value.begin() + end);
    return byteOrderTable(value);
}
