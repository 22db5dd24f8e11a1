// SPDX-License-Identifier: MIT
#include "address_text.h"

#include "areas.h"

#include "../driver/arithmetic.h"

#include <QtCore/QStringList>

namespace {

const int noAddress = -1;
const int bitsOfRegister = 16;

/// Text after a second point is ignored.
int registerAndBit(const QString &text)
{
    const QChar point = QLatin1Char('.');
    if (!text.contains(point))
        return noAddress;
    const QStringList parts = text.split(point);
    return arithmetic::wrapped(qint64(parts.at(0).toInt()) * bitsOfRegister + parts.at(1).toInt());
}

} // namespace

int StringAddressToInt(int area, QString addressText)
{
    if (area == AreaInputRegisterBit || area == AreaHoldingRegisterBit)
        return registerAndBit(addressText);
    return addressText.toInt();
}

int PLCAddressChangeIntef(int area, QString addressText)
{
    return StringAddressToInt(area, addressText);
}
