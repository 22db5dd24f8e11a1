// SPDX-License-Identifier: MIT
#include "address_text.h"

#include "areas.h"

#include "../driver/arithmetic.h"

namespace {

const int noAddress = -1;
const int bitsOfRegister = 16;
const int mostDigits = 9; // what fits 32 bits whatever the digits are

/// The number that the digits from `from` up to `end` make, as nearly every address is written, or -1 when
/// there is something else. Costs a fraction of QString::toInt and takes nothing from the heap.
int plainNumber(const QString &text, int from, int end)
{
    if (end == from || end - from > mostDigits)
        return -1;
    int number = 0;
    for (const QChar *at = text.constData() + from; at != text.constData() + end; ++at) {
        const int digit = at->unicode() - '0';
        if (digit < 0 || digit > 9)
            return -1;
        number = 10 * number + digit;
    }
    return number;
}

// What follows and is not inlined is what a plain number would have to pay for.

__attribute__((noinline)) int anyNumber(const QString &text, int from, int end)
{
    return text.mid(from, end - from).toInt();
}

int number(const QString &text, int from, int end)
{
    const int plain = plainNumber(text, from, end);
    return plain >= 0 ? plain : anyNumber(text, from, end);
}

/// Text after a second point is ignored.
__attribute__((noinline)) int registerAndBit(const QString &text)
{
    const QChar point = QLatin1Char('.');
    const int first = text.indexOf(point);
    if (first < 0)
        return noAddress;
    const int second = text.indexOf(point, first + 1);
    const int end = second < 0 ? text.size() : second;
    return arithmetic::wrapped(qint64(number(text, 0, first)) * bitsOfRegister +
                               number(text, first + 1, end));
}

} // namespace

namespace varlists {

int addressOf(int area, const QString &text)
{
    if (area == AreaInputRegisterBit || area == AreaHoldingRegisterBit)
        return registerAndBit(text);
    return number(text, 0, text.size());
}

} // namespace varlists

int StringAddressToInt(int area, QString addressText)
{
    return varlists::addressOf(area, addressText);
}

int PLCAddressChangeIntef(int area, QString addressText)
{
    return varlists::addressOf(area, addressText);
}
