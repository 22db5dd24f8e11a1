// SPDX-License-Identifier: MIT
#include "byte_orders.h"

#include "value_text.h"

#include <QtCore/QtEndian>

namespace {

struct Order
{
    const char *letters; ///< which byte of the wire, A the first, is the most significant, and so on
    const char *name;
};

const Order orders[] = {
    {"ABCD", "high register first: the driver's order"},
    {"CDAB", "low register first"},
    {"BADC", "high register first, bytes swapped in each"},
    {"DCBA", "low register first, bytes swapped in each"},
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
    for (const Order &order : orders) {
        QByteArray ordered;
        for (const char *letter = order.letters; *letter; ++letter)
            ordered += bytes.at(*letter - 'A');
        const quint32 number = qFromBigEndian<quint32>(ordered.constData());
        lines << tableLine(text(order.letters), text(ordered.toHex(' ').toUpper().constData()),
                           QString::number(number), QString::number(static_cast<qint32>(number)),
                           floatText(number), text(order.name));
    }
    return lines;
}
