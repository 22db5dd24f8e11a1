// SPDX-License-Identifier: MIT
// Copies values between the image arrays and the host's bytes.
#include "bounds.h"

#include "../driver/api/steps/driver_object.h"
#include "../driver/api/steps/image_access.h"

#include <cstring>

using namespace modbus_driver;

namespace {

void putLowFirst(char *to, quint16 value)
{
    to[0] = static_cast<char>(value & 0xFF);
    to[1] = static_cast<char>(value >> 8);
}

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "registers are copied as they are in memory, low byte first");

/// The number of bytes of the registers inside the table.
std::size_t registerBytes(const ClippedRange &inside)
{
    return 2 * static_cast<std::size_t>(inside.end - inside.first);
}

quint16 takeLowFirst(const char *from)
{
    return static_cast<quint16>(static_cast<quint8>(from[0]) | static_cast<quint8>(from[1]) << 8);
}

/// Single bits of an image array. A word is a byte for the bit areas and a register for the other areas.
template <typename Word> struct BitRow
{
    enum { bits = sizeof(Word) * 8 };
    Word *words;

    bool get(int address) const { return (words[address / bits] >> (address % bits) & 1) != 0; }
    void set(int address, bool on)
    {
        const Word mask = static_cast<Word>(1u << (address % bits));
        Word &word = words[address / bits];
        word = static_cast<Word>(on ? word | mask : word & ~mask);
    }
};

template <typename Word> void readBits(QByteArray &out, BitRow<Word> row, int start, int count, int table)
{
    const ClippedRange inside(start, count, table);
    if (inside.end == 0)
        return;
    char *to = ensureSize(out, inside.end);
    if (inside.first > 0)
        std::memset(to, 0, static_cast<std::size_t>(inside.first));
    for (int i = inside.first; i < inside.end; ++i)
        to[i] = row.get(start + i);
}

template <typename Word>
void writeBits(BitRow<Word> row, const QByteArray &in, int start, int count, int table)
{
    const ClippedRange inside(start, qMin(count, in.size()), table);
    for (int i = inside.first; i < inside.end; ++i)
        row.set(start + i, in.at(i) == 1);
}

} // namespace

void GetBitFromUC(QByteArray &out, unsigned char *bits, int start, int count)
{
    readBits(out, BitRow<quint8>{bits}, start, count, ImageBits);
}

void GetBitFromUS(QByteArray &out, unsigned short *regs, int start, int count)
{
    readBits(out, BitRow<quint16>{regs}, start, count, ImageRegisterBits);
}

void GetWordFromUS(QByteArray &out, unsigned short *regs, int start, int count)
{
    const ClippedRange inside(start, count, ImageRegisters);
    if (inside.end == 0)
        return;
    char *to = ensureSize(out, 2 * inside.end);
    if (inside.first > 0)
        std::memset(to, 0, 2 * static_cast<std::size_t>(inside.first));
    if (inside.first < inside.end)
        std::memcpy(to + 2 * inside.first, regs + (start + inside.first), registerBytes(inside));
}

void GetWordFromUI(QByteArray &out, unsigned short *regs, int start, int count)
{
    if (count == 1) {
        if (ClippedRange(start, 2, ImageRegisters).end == 2)
            putLowFirst(ensureSize(out, 2), start < 0 ? quint16(0) : regs[start + 1]);
        return;
    }
    const int pairs = ClippedRange(start, count, ImageRegisters).end / 2;
    if (pairs == 0)
        return;
    char *to = ensureSize(out, 4 * pairs);
    for (int j = 0; j < pairs; ++j) {
        const int r = start + 2 * j;
        putLowFirst(to + 4 * j, r < 0 ? quint16(0) : regs[r + 1]);
        putLowFirst(to + 4 * j + 2, r < 0 ? quint16(0) : regs[r]);
    }
}

void SetBitToUC(int start, unsigned char *bits, QByteArray *in, int count)
{
    writeBits(BitRow<quint8>{bits}, *in, start, count, ImageBits);
}

void SetBitToUS(int start, unsigned short *regs, QByteArray *in, int count)
{
    writeBits(BitRow<quint16>{regs}, *in, start, count, ImageRegisterBits);
}

void SetWordToUS(int start, unsigned short *regs, QByteArray *in, int count)
{
    const ClippedRange inside(start, qMin(count, in->size() / 2), ImageRegisters);
    if (inside.first < inside.end)
        std::memcpy(regs + (start + inside.first), in->constData() + 2 * inside.first, registerBytes(inside));
}

void SetWordToUI(int start, unsigned short *regs, QByteArray *in, int count)
{
    const int pairs = ClippedRange(start, qMin(count, in->size() / 2), ImageRegisters).end / 2;
    const char *from = in->constData();
    for (int j = 0; j < pairs; ++j) {
        const int r = start + 2 * j;
        if (r < 0)
            continue;
        regs[r] = takeLowFirst(from + 4 * j + 2);
        regs[r + 1] = takeLowFirst(from + 4 * j);
    }
}
