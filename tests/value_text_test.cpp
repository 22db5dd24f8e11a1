// SPDX-License-Identifier: MIT
#include "../host/explain/value_text.h"

#include "host_words.h"

namespace {

struct Value
{
    const char *name, *variable, *typed;
    const char *bytes; ///< hexadecimal, as the driver takes them
    const char *decimal, *hexadecimal, *withSign, *fraction;
};

const Value values[] = {
    {"bits", "coil:0*3", "1,0,1", "01 00 01", "1 0 1", "1 0 1", "1 0 1", "1 0 1"},
    {"register", "hr:0", "4660", "34 12", "4660", "0x1234", "4660", "4660"},
    {"negative register", "hr:0", "-2", "fe ff", "65534", "0xFFFE", "-2", "65534"},
    {"ends of a register", "hr:0*2", "-32768, 0xFFFF", "00 80 ff ff", "32768 65535", "0x8000 0xFFFF", "-32768 -1", "32768 65535"},
    {"pair", "hr32:0", "0x12345678", "78 56 34 12", "305419896", "0x12345678", "305419896", "5.6904566e-28"},
    {"ends of a pair", "hr32:0*2", "-2147483648,0x1", "00 00 00 80 01 00 00 00", "2147483648 1", "0x80000000 0x00000001",
     "-2147483648 1", "-0.0 1e-45"},
    {"a fraction", "hr32:0", "234.5664", "00 91 6a 43", "1131057408", "0x436A9100", "1131057408", "234.5664"},
    {"a whole fraction", "hr32:0", "1.0", "00 00 80 3f", "1065353216", "0x3F800000", "1065353216", "1.0"},
    {"an exponent", "hr32:0", "-1e10", "f9 02 15 d0", "3491037945", "0xD01502F9", "-803929351", "-1e+10"},
    {"the largest float, which is shown rounded up", "hr32:0", "3.4028235e+38", "ff ff 7f 7f", "2139095039", "0x7F7FFFFF",
     "2139095039", "3.4028235e+38"},
    {"infinity", "hr32:0", "inf", "00 00 80 7f", "2139095040", "0x7F800000", "2139095040", "inf"},
};

TEST(Value, BecomesBytesAndIsShownInEveryFormatAndReadsBackFromEach)
{
    for (const Value &row : values) {
        SCOPED_TRACE(row.name);
        const Variable of = variable(QString::fromLatin1(row.variable));
        QString error;
        const QByteArray bytes = parseValues(of, QString::fromLatin1(row.typed), &error).value_or(QByteArray());
        EXPECT_EQ(bytes.toHex(' ').toStdString(), row.bytes) << qPrintable(error);
        const auto isShownAs = [&](const char *text, ValueFormat format) {
            EXPECT_EQ(valueText(of, bytes, format).toStdString(), text);
            const QString typed = QString::fromLatin1(text).replace(QLatin1Char(' '), QLatin1Char(','));
            EXPECT_EQ(parseValues(of, typed, &error), bytes) << text;
        };
        isShownAs(row.decimal, ValueFormat::Decimal);
        isShownAs(row.hexadecimal, ValueFormat::Hexadecimal);
        isShownAs(row.withSign, ValueFormat::Signed);
        isShownAs(row.fraction, ValueFormat::Float);
    }
}

TEST(Value, ThatIsNoNumberIsShownAsOneThatCanBeTyped)
{
    const Variable of = variable(QStringLiteral("hr32:0"));
    EXPECT_EQ(valueText(of, QByteArray::fromHex("0000c0ff"), ValueFormat::Float).toStdString(), "nan") << "its sign is set";
    QString error;
    EXPECT_EQ(parseValues(of, QStringLiteral("nan"), &error), QByteArray::fromHex("0000c07f")) << qPrintable(error);
}

TEST(Value, ThatBytesDoNotHoldWhollyIsLeftOut)
{
    EXPECT_EQ(valueText(variable(QStringLiteral("hr:0*2")), QByteArray::fromHex("341256"), ValueFormat::Decimal).toStdString(),
              "4660");
    EXPECT_EQ(valueText(variable(QStringLiteral("hr:0")), QByteArray(), ValueFormat::Decimal).toStdString(), "");
}

struct Refused
{
    const char *name, *variable, *typed;
    const char *hint; ///< what the line must say
};

const Refused refused[] = {
    {"bit of two", "coil:0", "2", "a bit holds 0 to 1"},
    {"negative bit", "hrbit:0.0", "-1", "a bit holds 0 to 1"},
    {"register too high", "hr:0", "65536", "\"65536\" for hr:0: a register holds -32768 to 65535"},
    {"register too low", "hr:0", "-32769", "a register holds -32768 to 65535"},
    {"hexadecimal too high", "hr:0", "0x10000", "a register holds"},
    {"pair too high", "hr32:0", "4294967296", "a 32-bit value holds -2147483648 to 4294967295"},
    {"pair beyond 64 bits", "hr32:0", "99999999999999999999", "that a 32-bit value holds"},
    {"fraction in a register", "hr:0", "1.5", "fractions are for hr32"},
    {"word in a register", "hr:0", "one", "no number that a register holds"},
    {"fraction too large", "hr32:0", "1e39", "no number that a 32-bit value holds"},
    {"empty value", "hr:0", "", "value \"\" for hr:0"},
    {"signed hexadecimal", "hr:0", "0x-1", "no whole number"},
    {"too few values", "hr:0*3", "1,2", "takes 3 values with commas between them, not 2"},
    {"too many values", "hr:0", "1,2", "takes 1 values with commas between them, not 2"},
};

TEST(Value, ThatIsRefusedGetsALineThatNamesItAndItsRange)
{
    for (const Refused &row : refused) {
        QString error;
        EXPECT_FALSE(parseValues(variable(QString::fromLatin1(row.variable)), QString::fromLatin1(row.typed), &error))
            << row.name;
        EXPECT_TRUE(error.contains(QLatin1String(row.hint))) << row.name << ": " << qPrintable(error);
    }
}

} // namespace
