// SPDX-License-Identifier: MIT
#include "packing.h"

#include "../driver/driver_object.h"

namespace {

using image::bitCount;
using image::registerBits;
using image::registerCount;

/// How many of `count` elements from `start` on lie ahead of the table's end; never more than the
/// table has.
int within(int start, int count, int table)
{
    return static_cast<int>(qBound<qint64>(0, qint64(table) - start, qMin(qMax(0, count), table)));
}

char *grown(QByteArray &out, int size)
{
    if (out.size() < size)
        out.resize(size);
    return out.data();
}

void putLowFirst(char *to, quint16 value)
{
    to[0] = static_cast<char>(value & 0xFF);
    to[1] = static_cast<char>(value >> 8);
}

quint16 takeLowFirst(const char *from)
{
    return static_cast<quint16>(static_cast<quint8>(from[0]) | static_cast<quint8>(from[1]) << 8);
}

/// The image in words of `bits` bits each: bytes for the bit areas, registers for the others.
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
    const int n = within(start, count, table);
    if (n == 0)
        return;
    char *to = grown(out, n);
    for (int i = 0; i < n; ++i)
        to[i] = start + i >= 0 && row.get(start + i);
}

template <typename Word>
void writeBits(BitRow<Word> row, const QByteArray &in, int start, int count, int table)
{
    const int n = within(start, qMin(count, in.size()), table);
    for (int i = 0; i < n; ++i) {
        if (start + i >= 0)
            row.set(start + i, in.at(i) == 1);
    }
}

} // namespace

void GetBitFromUC(QByteArray &out, unsigned char *bits, int start, int count)
{
    readBits(out, BitRow<quint8>{bits}, start, count, bitCount);
}

void GetBitFromUS(QByteArray &out, unsigned short *regs, int start, int count)
{
    readBits(out, BitRow<quint16>{regs}, start, count, registerBits);
}

void GetWordFromUS(QByteArray &out, unsigned short *regs, int start, int count)
{
    const int n = within(start, count, registerCount);
    if (n == 0)
        return;
    char *to = grown(out, 2 * n);
    for (int k = 0; k < n; ++k)
        putLowFirst(to + 2 * k, start + k < 0 ? quint16(0) : regs[start + k]);
}

void GetWordFromUI(QByteArray &out, unsigned short *regs, int start, int count)
{
    if (count == 1) {
        if (within(start, 2, registerCount) == 2)
            putLowFirst(grown(out, 2), start < 0 ? quint16(0) : regs[start + 1]);
        return;
    }
    const int n = within(start, count, registerCount) / 2;
    if (n == 0)
        return;
    char *to = grown(out, 4 * n);
    for (int j = 0; j < n; ++j) {
        const int r = start + 2 * j;
        putLowFirst(to + 4 * j, r < 0 ? quint16(0) : regs[r + 1]);
        putLowFirst(to + 4 * j + 2, r < 0 ? quint16(0) : regs[r]);
    }
}

void SetBitToUC(int start, unsigned char *bits, QByteArray *in, int count)
{
    writeBits(BitRow<quint8>{bits}, *in, start, count, bitCount);
}

void SetBitToUS(int start, unsigned short *regs, QByteArray *in, int count)
{
    writeBits(BitRow<quint16>{regs}, *in, start, count, registerBits);
}

void SetWordToUS(int start, unsigned short *regs, QByteArray *in, int count)
{
    const int n = within(start, qMin(count, in->size() / 2), registerCount);
    const char *from = in->constData();
    for (int k = 0; k < n; ++k) {
        if (start + k >= 0)
            regs[start + k] = takeLowFirst(from + 2 * k);
    }
}

void SetWordToUI(int start, unsigned short *regs, QByteArray *in, int count)
{
    const int n = within(start, qMin(count, in->size() / 2), registerCount) / 2;
    const char *from = in->constData();
    for (int j = 0; j < n; ++j) {
        const int r = start + 2 * j;
        if (r < 0)
            continue;
        regs[r] = takeLowFirst(from + 4 * j + 2);
        regs[r + 1] = takeLowFirst(from + 4 * j);
    }
}
