// SPDX-License-Identifier: MIT
#include "../host/explain/value_text.h"

#include "host_words.h"

namespace {

struct Value
{
    const char *name, *variable, *typed;
    const char *bytes; ///< hexadecimal, as the driver takes them; nothing when the value is refused
    const char *shown; ///< or what the error must say
    double scale = 1;
};

const Value values[] = {
    {"bits", "coil:0*3", "1,0,1", "01 00 01", "1 0 1"},
    {"bit of two", "coil:0", "2", "", "value \"2\" for coil:0: it takes 0 to 1"},
    {"ends of a register", "hr:0*4", "65535, -32768,0xFFFF,-1", "ff ff 00 80 ff ff ff ff", "65535 32768 65535 65535"},
    {"register too low", "hr:0", "-32769", "", "it takes -32768 to 65535"},
    {"negative unsigned", "hr:0:u16", "-1", "", "it takes 0 to 65535"},
    {"signed registers", "hr:0*3:s16", "-32768 32767 0xFFFE", "00 80 ff 7f fe ff", "-32768 32767 -2"},
    {"hexadecimal too high", "hr:0:s16", "0x10000", "", "it takes 0 to 65535"},
    {"hexadecimal register", "hr:0*2:hex", "18 0xFFFE", "12 00 fe ff", "0x0012 0xFFFE"},
    {"low byte first", "hr:0:hex:BA", "0x1234", "12 34", "0x1234"},
    {"ends of a pair", "hr32:0*2", "4294967295 -2147483648", "ff ff ff ff 00 00 00 80", "4294967295 2147483648"},
    {"pair too high", "hr32:0", "4294967296", "", "it takes -2147483648 to 4294967295"},
    {"signed too high", "hr32:0:s32", "2147483648", "", "it takes -2147483648 to 2147483647"},
    {"low register first", "hr32:0:float:CDAB", "21.5", "ac 41 00 00", "21.5"},
    {"bytes swapped", "hr32:0:u32:BADC", "0x12345678", "56 78 12 34", "305419896"},
    {"all reversed", "hr32:0*2:s32:DCBA", "0x12345678 -2", "12 34 56 78 ff ff ff fe", "305419896 -2"},
    {"fractions in plain pairs", "hr32:0*2", "234.5664 1e0", "00 91 6a 43 00 00 80 3f", "1131057408 1065353216"},
    {"floats", "hr32:0*3:float", "21 -1e10 1e-45", "00 00 a8 41 f9 02 15 d0 01 00 00 00", "21.0 -1e+10 1e-45"},
    {"no number", "hr32:0:float", "nan", "00 00 c0 7f", "nan"},
    {"largest float", "hr32:0:float", "3.4028235e+38", "ff ff 7f 7f", "3.4028235e+38"},
    {"infinities", "hr32:0*2:float", "inf,-inf", "00 00 80 7f 00 00 80 ff", "inf -inf"},
    {"float too large", "hr32:0:float", "1e39", "", "no number that fits float"},
    {"fraction in a register", "hr:0", "1.5", "", "fractions are for hr32"},
    {"no number in a register", "hr:0", "nan", "", "it takes whole numbers"},
    {"word in a register", "hr:0", "one", "", "no number that fits u16"},
    {"signed hexadecimal", "hr:0", "0x-1", "", "no number that fits u16"},
    {"scaled registers", "hr:0*3", "+0.3 6553.5 0x10", "03 00 ff ff 10 00", "0.3 6553.5 1.6", 0.1},
    {"scaled down", "hr:0:s16", "-327670", "ff 7f", "-327670", -10},
    {"between two steps", "hr:0:u16", "0.25", "", "it takes multiples of 0.1", 0.1},
    {"scaled too high", "hr:0", "6553.6", "", "it takes 0 to 6553.5", 0.1},
    {"scaled float", "hr32:0:float", "123.4567", "dd 87 45 41", "123.4567", 10},
    {"scaled float too large", "hr32:0:float", "3e38", "", "no number that fits float", 0.1},
    {"text", "hr:40*3:text", "PUMP", "55 50 50 4d 00 00", "PUMP"},
    {"text, low byte first", "hr:40*2:text:BA", "PUMP", "50 55 4d 50", "PUMP"},
    {"escapes", "hr:0*4:text", " a\\\\\\x00\\xfF, ", "61 20 00 5c 2c ff 00 20", " a\\\\\\x00\\xff, "},
    {"text too long", "hr:0*2:text", "PUMPS", "", "it has 5 bytes, but there is space for 4"},
    {"broken escape", "hr:0*2:text", "\\x+1", "", "\\xHH for other bytes"},
    {"foreign character", "hr:0*2:text", "\xe9", "", "text is ASCII"},
    {"no value", "hr:0", "", "", "value \"\" for hr:0"},
    {"too few values", "hr:0*3", "1,2", "", "takes 3 values with commas or blanks between them, not 2"},
    {"too many values", "hr:0", "1 2", "", "takes 1 values with commas or blanks between them, not 2"},
};

TEST(Value, BecomesBytesAndIsShownSoThatItCanBeTypedOrIsRefusedWithAReason)
{
    for (const Value &row : values) {
        SCOPED_TRACE(row.name);
        Variable of = variable(QString::fromLatin1(row.variable));
        of.scale = row.scale;
        QString error;
        const auto typed = parseValues(of, QString::fromLatin1(row.typed), &error);
        EXPECT_EQ(typed.value_or(QByteArray()).toHex(' ').toStdString(), row.bytes) << qPrintable(error);
        EXPECT_TRUE(typed || error.contains(QLatin1String(row.shown))) << qPrintable(error);
        if (!typed)
            continue;
        EXPECT_EQ(valueText(of, *typed).toStdString(), row.shown);
        EXPECT_EQ(parseValues(of, QString::fromLatin1(row.shown), &error), typed) << qPrintable(error);
    }
}

TEST(Value, IsShownAsFarAsBytesHoldItWhateverTheyHold)
{
    EXPECT_EQ(valueText(variable(QStringLiteral("hr:0*2")), QByteArray::fromHex("341256")).toStdString(), "4660");
    EXPECT_EQ(valueText(variable(QStringLiteral("hr:0*2:text")), QByteArray()).toStdString(), "");
    EXPECT_EQ(valueText(variable(QStringLiteral("hr32:0:float")), QByteArray::fromHex("0000c0ff")).toStdString(), "nan")
        << "its sign is set";
}

} // namespace
