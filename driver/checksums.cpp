// SPDX-License-Identifier: MIT
#include "api/steps/checksums.h"

#include "base/arithmetic.h"
#include "base/block_checks.h"

using namespace modbus_driver;

unsigned short CalSUM(const unsigned char *bytes, unsigned short count)
{
    return static_cast<unsigned short>(byteSum(bytes, count) & 0xFFFF);
}

unsigned short CalCRC(const unsigned char *bytes, unsigned short count)
{
    return static_cast<unsigned short>(crc16(bytes, count));
}

int CalLRC(const unsigned char *bytes, unsigned short count)
{
    return static_cast<int>(~byteSum(bytes, count) & 0xFF) + 1;
}

unsigned short CalXOR(const unsigned char *bytes, unsigned short count)
{
    unsigned check = bytes[0];
    for (unsigned i = 1; i < count; ++i)
        check ^= bytes[i];
    return static_cast<unsigned short>(check);
}

int DigitalToASCII(int value)
{
    return wrapped(qint64(value) + (value <= 9 ? '0' : 'A' - 10));
}

int ASCIIToDigital(int ch)
{
    if (ch < '0' || ch == '@')
        return 0;
    return ch < 'A' ? ch - '0' : ch - ('A' - 10);
}
