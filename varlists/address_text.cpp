// SPDX-License-Identifier: MIT
#include "address_text.h"

#include "../driver/api/codes.h"
#include "../driver/api/host_calls.h"
#include "../driver/api/steps/list_building.h"
#include "../driver/base/arithmetic.h"

namespace modbus_driver {

namespace {

const int noAddress = -1;
const int mostDigits = 9; // any nine digits fit 32 bits

/// The number in the characters from `from` up to `end`, or -1 when one of them is not a digit. Nearly every
/// address has digits only. For these this function avoids QString::toInt, which allocates memory.
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

// noinline, in two places: keeps slow paths out of addressOf. A read of one register then takes 260 instead
// of 282 instructions on ARM (driver-bench, panel_read/1_register/shared).

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
    return wrapped(qint64(number(text, 0, first)) * BitsOfRegister + number(text, first + 1, end));
}

} // namespace

int addressOf(int area, const QString &text)
{
    if (isBitOfRegister(area))
        return registerAndBit(text);
    return number(text, 0, text.size());
}

} // namespace modbus_driver

int StringAddressToInt(int area, QString addressText)
{
    return modbus_driver::addressOf(area, addressText);
}

int PLCAddressChangeIntef(int area, QString addressText)
{
    return modbus_driver::addressOf(area, addressText);
}
