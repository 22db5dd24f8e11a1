// SPDX-License-Identifier: MIT
// The checksums over 256 bytes. Their floors pass over the bytes once; that of the CRC has a table.
#include "fresh_driver.h"
#include "work.h"

#include <array>
#include <numeric>

namespace bench {

namespace {

typedef std::array<unsigned char, 256> Bytes;

Bytes someBytes()
{
    Bytes bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(i * 7);
    return bytes;
}

template <typename Check> Step over(Check check)
{
    return [check, bytes = someBytes()] {
        keep(check(bytes.data(), static_cast<unsigned short>(bytes.size())));
    };
}

unsigned sum(const unsigned char *bytes, unsigned short count)
{
    return std::accumulate(bytes, bytes + count, 0u);
}

unsigned exclusiveOr(const unsigned char *bytes, unsigned short count)
{
    return std::accumulate(bytes, bytes + count, 0u, [](unsigned a, unsigned b) { return a ^ b; });
}

std::array<unsigned short, 256> crcTable()
{
    std::array<unsigned short, 256> table;
    for (unsigned i = 0; i < table.size(); ++i) {
        unsigned crc = i;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xA001 : crc >> 1;
        table[i] = static_cast<unsigned short>(crc);
    }
    return table;
}

unsigned crcByTable(const unsigned char *bytes, unsigned short count)
{
    static const std::array<unsigned short, 256> table = crcTable();
    unsigned crc = 0xFFFF;
    for (unsigned i = 0; i < count; ++i)
        crc = crc >> 8 ^ table[(crc ^ bytes[i]) & 0xFF];
    return crc;
}

} // namespace

void addChecksums(Works *works)
{
    works->push_back({"checksum/sum_256_bytes", [] { return over(CalSUM); }});
    works->push_back({"floor/checksum/sum_256_bytes", [] { return over(sum); }});
    works->push_back({"checksum/crc_256_bytes", [] { return over(CalCRC); }});
    works->push_back({"floor/checksum/crc_256_bytes", [] { return over(crcByTable); }});
    works->push_back({"checksum/lrc_256_bytes", [] { return over(CalLRC); }});
    works->push_back({"floor/checksum/lrc_256_bytes", [] { return over(sum); }});
    works->push_back({"checksum/xor_256_bytes", [] { return over(CalXOR); }});
    works->push_back({"floor/checksum/xor_256_bytes", [] { return over(exclusiveOr); }});
}

} // namespace bench
