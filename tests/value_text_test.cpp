// SPDX-License-Identifier: MIT
#include "value_text.h"

#include "byte_orders.h"

#include <gtest/gtest.h>

namespace {

Variable variable(const char *text)
{
    QString error;
    return parseVariable(QString::fromLatin1(text), &error).value();
}

struct Value
{
    const char *name;
    const char *variable;
    const char *typed;
    const char *bytes; ///< hexadecimal, as the driver takes them
    const char *decimal, *hexadecimal, *withSign, *fraction;
};

class TypedValue : public testing::TestWithParam<Value>
{
};

TEST_P(TypedValue, BecomesBytesAndIsShownInEveryFormat)
{
    const Value &row = GetParam();
    const Variable of = variable(row.variable);
    QString error;
    const auto bytes = parseValues(of, QString::fromLatin1(row.typed), &error);
    ASSERT_TRUE(bytes) << qPrintable(error);
    EXPECT_EQ(bytes->toHex(' ').toStdString(), row.bytes);
    EXPECT_EQ(valueText(of, *bytes, ValueFormat::Decimal).toStdString(), row.decimal);
    EXPECT_EQ(valueText(of, *bytes, ValueFormat::Hexadecimal).toStdString(), row.hexadecimal);
    EXPECT_EQ(valueText(of, *bytes, ValueFormat::Signed).toStdString(), row.withSign);
    EXPECT_EQ(valueText(of, *bytes, ValueFormat::Float).toStdString(), row.fraction);
}

TEST_P(TypedValue, ReadsBackFromEveryFormat)
{
    const Variable of = variable(GetParam().variable);
    const Value &row = GetParam();
    for (const char *shown : {row.decimal, row.hexadecimal, row.withSign, row.fraction}) {
        const QString text = QString::fromLatin1(shown).replace(QLatin1Char(' '), QLatin1Char(','));
        QString error;
        const auto bytes = parseValues(of, text, &error);
        ASSERT_TRUE(bytes) << qPrintable(error);
        EXPECT_EQ(bytes->toHex(' ').toStdString(), row.bytes) << qPrintable(text);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, TypedValue,
    testing::Values(Value{"Bits", "coil:0*3", "1,0,1", "01 00 01", "1 0 1", "1 0 1", "1 0 1", "1 0 1"},
                    Value{"Register", "hr:0", "4660", "34 12", "4660", "0x1234", "4660", "4660"},
                    Value{"NegativeRegister", "hr:0", "-2", "fe ff", "65534", "0xFFFE", "-2", "65534"},
                    Value{"EndsOfARegister", "hr:0*2", "-32768, 0xFFFF", "00 80 ff ff", "32768 65535",
                          "0x8000 0xFFFF", "-32768 -1", "32768 65535"},
                    Value{"Pair", "hr32:0", "0x12345678", "78 56 34 12", "305419896", "0x12345678",
                          "305419896", "5.6904566e-28"},
                    Value{"EndsOfAPair", "hr32:0*2", "-2147483648,0x1", "00 00 00 80 01 00 00 00",
                          "2147483648 1", "0x80000000 0x00000001", "-2147483648 1", "-0.0 1e-45"}),
    [](const auto &row) { return row.param.name; });

TEST(Fraction, IsSentAsSinglePrecisionAndKeepsItsPoint)
{
    QString error;
    const struct
    {
        const char *typed, *shown, *bytes;
    } rows[] = {{"234.5664", "234.5664", "00 91 6a 43"}, {"1.0", "1.0", "00 00 80 3f"},
                {"-1e10", "-1e+10", "f9 02 15 d0"},      {"inf", "inf", "00 00 80 7f"},
                {"0.1", "0.1", "cd cc cc 3d"},           {"1e-45", "1e-45", "01 00 00 00"}};
    for (const auto &row : rows) {
        const auto bytes = parseValues(variable("hr32:0"), QString::fromLatin1(row.typed), &error);
        ASSERT_TRUE(bytes) << row.typed << qPrintable(error);
        EXPECT_EQ(bytes->toHex(' ').toStdString(), row.bytes) << row.typed;
        EXPECT_EQ(valueText(variable("hr32:0"), *bytes, ValueFormat::Float).toStdString(), row.shown);
    }
}

TEST(Value, ThatBytesDoNotHoldWhollyIsLeftOut)
{
    EXPECT_EQ(
        valueText(variable("hr:0*2"), QByteArray::fromHex("341256"), ValueFormat::Decimal).toStdString(),
        "4660");
    EXPECT_EQ(valueText(variable("hr:0"), QByteArray(), ValueFormat::Decimal).toStdString(), "");
}

struct Refused
{
    const char *name;
    const char *variable;
    const char *typed;
    const char *hint;
};

class RefusedValue : public testing::TestWithParam<Refused>
{
};

TEST_P(RefusedValue, GetsALineThatNamesItAndItsRange)
{
    QString error;
    EXPECT_FALSE(parseValues(variable(GetParam().variable), QString::fromLatin1(GetParam().typed), &error));
    EXPECT_TRUE(error.contains(QLatin1String(GetParam().hint))) << qPrintable(error);
}

INSTANTIATE_TEST_SUITE_P(
    Values, RefusedValue,
    testing::Values(
        Refused{"BitOfTwo", "coil:0", "2", "a bit holds 0 to 1"},
        Refused{"NegativeBit", "hrbit:0.0", "-1", "a bit holds 0 to 1"},
        Refused{"RegisterTooHigh", "hr:0", "65536", "\"65536\" for hr:0: a register holds -32768 to 65535"},
        Refused{"RegisterTooLow", "hr:0", "-32769", "a register holds -32768 to 65535"},
        Refused{"HexadecimalTooHigh", "hr:0", "0x10000", "a register holds"},
        Refused{"PairTooHigh", "hr32:0", "4294967296", "a 32-bit value holds -2147483648 to 4294967295"},
        Refused{"PairBeyond64Bits", "hr32:0", "99999999999999999999", "that a 32-bit value holds"},
        Refused{"FractionInARegister", "hr:0", "1.5", "fractions are for hr32"},
        Refused{"WordInARegister", "hr:0", "one", "no number that a register holds"},
        Refused{"FractionTooLarge", "hr32:0", "1e39", "no number that a 32-bit value holds"},
        Refused{"EmptyValue", "hr:0", "", "value \"\" for hr:0"},
        Refused{"SignedHexadecimal", "hr:0", "0x-1", "no whole number"},
        Refused{"TooFewValues", "hr:0*3", "1,2", "takes 3 values with commas between them, not 2"},
        Refused{"TooManyValues", "hr:0", "1,2", "takes 1 values with commas between them, not 2"}),
    [](const auto &row) { return row.param.name; });

TEST(ByteOrders, ReadTheSameBytesFourWays)
{
    const QStringList lines = byteOrderTable(QByteArray::fromHex("436a91f4"));
    ASSERT_EQ(lines.size(), 5);
    const char *expected[] = {"ABCD 43 6A 91 F4 1131057652 1131057652 234.57013 high register first:",
                              "CDAB 91 F4 43 6A 2448704362 -1846262934 ",
                              "BADC 6A 43 F4 91 1782838417 1782838417 ",
                              "DCBA F4 91 6A 43 4103170627 -191796669 "};
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(lines.at(i + 1).simplified().startsWith(QLatin1String(expected[i])))
            << qPrintable(lines.at(i + 1));
}

} // namespace
