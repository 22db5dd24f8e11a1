// SPDX-License-Identifier: MIT
#include "checksums.h"

#include "arithmetic.h"

unsigned short CalSUM(const unsigned char *bytes, unsigned short count)
{
    unsigned sum = 0;
    for (unsigned i = 0; i < count; ++i)
        sum += bytes[i];
    return static_cast<unsigned short>(sum & 0xFFFF);
}

unsigned short CalCRC(const unsigned char *bytes, unsigned short count)
{
    unsigned crc = 0xFFFF;
    for (unsigned i = 0; i < count; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xA001 : crc >> 1;
    }
    return static_cast<unsigned short>(crc);
}

int CalLRC(const unsigned char *bytes, unsigned short count)
{
    unsigned sum = 0;
    for (unsigned i = 0; i < count; ++i)
        sum += bytes[i];
    return static_cast<int>(~sum & 0xFF) + 1;
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
    return arithmetic::wrapped(qint64(value) + (value <= 9 ? '0' : 'A' - 10));
}

int ASCIIToDigital(int ch)
{
    if (ch < '0' || ch == '@')
        return 0;
    return ch < 'A' ? ch - '0' : ch - ('A' - 10);
}
