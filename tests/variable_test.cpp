// SPDX-License-Identifier: MIT
#include "variable.h"

#include <QtCore/QTemporaryFile>

#include <gtest/gtest.h>

namespace {

struct Written
{
    const char *name;
    const char *text;
    int unit, area;
    const char *addressText;
    int address, count, driverCount;
};

class WrittenVariable : public testing::TestWithParam<Written>
{
};

TEST_P(WrittenVariable, IsReadInAllItsParts)
{
    QString error;
    const auto variable = parseVariable(QString::fromLatin1(GetParam().text), &error);
    ASSERT_TRUE(variable) << qPrintable(error);
    EXPECT_EQ(variable->name, QLatin1String(GetParam().text));
    EXPECT_EQ(variable->unit, GetParam().unit);
    EXPECT_EQ(variable->area, GetParam().area);
    EXPECT_EQ(variable->addressText, QLatin1String(GetParam().addressText));
    EXPECT_EQ(variable->address, GetParam().address);
    EXPECT_EQ(variable->count, GetParam().count);
    EXPECT_EQ(variable->driverCount(), GetParam().driverCount);
}

INSTANTIATE_TEST_SUITE_P(
    Syntax, WrittenVariable,
    testing::Values(Written{"UnitAndCountLeftOut", "coil:17", 1, 0, "17", 17, 1, 1},
                    Written{"AllParts", "2/input:5*8", 2, 1, "5", 5, 8, 8},
                    Written{"BitOfInputRegister", "irbit:3.4", 1, 2, "3.4", 52, 1, 1},
                    Written{"BitsRunIntoTheNextRegister", "hrbit:0.15*2", 1, 3, "0.15", 15, 2, 2},
                    Written{"LeadingZerosAreDecimal", "ir:0010", 1, 4, "10", 10, 1, 1},
                    Written{"LastRegisterOfLastUnit", "255/hr:65535", 255, 5, "65535", 65535, 1, 1},
                    Written{"LastInputPair", "ir32:65534", 1, 6, "65534", 65534, 1, 2},
                    Written{"WholeTableOfPairs", "0/hr32:0*32768", 0, 7, "0", 0, 32768, 65536},
                    Written{"WholeTableOfRegisterBits", "hrbit:0.0*1048576", 1, 3, "0.0", 0, 1048576,
                            1048576}),
    [](const auto &row) { return row.param.name; });

struct Mistake
{
    const char *name;
    const char *text;
    const char *hint; ///< what the line must say
};

class MistakenVariable : public testing::TestWithParam<Mistake>
{
};

TEST_P(MistakenVariable, IsRefusedInOneLineThatSaysWhatWouldBeRight)
{
    QString error;
    EXPECT_FALSE(parseVariable(QString::fromLatin1(GetParam().text), &error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("variable \"%1\": ").arg(QLatin1String(GetParam().text))))
        << qPrintable(error);
    EXPECT_TRUE(error.contains(QLatin1String(GetParam().hint))) << qPrintable(error);
    EXPECT_FALSE(error.contains(QLatin1Char('\n')));
}

INSTANTIATE_TEST_SUITE_P(
    Syntax, MistakenVariable,
    testing::Values(Mistake{"Nothing", "", "such as hr:100"}, Mistake{"NoColon", "hr100", "such as hr:100"},
                    Mistake{"CountAheadOfTheColon", "hr*2:1", "such as hr:100"},
                    Mistake{"UnitTooHigh", "256/hr:1", "0 to 255, not \"256\""},
                    Mistake{"UnitNegative", "-1/hr:1", "0 to 255, not \"-1\""},
                    Mistake{"UnitEmpty", "/hr:1", "0 to 255, not \"\""},
                    Mistake{"UnknownArea", "holding:1", "areas are coil, input"},
                    Mistake{"AreaInCapitals", "HR:1", "areas are coil, input"},
                    Mistake{"BitOfHoldingRegister", "hr:12.5", "did you mean hrbit:12.5?"},
                    Mistake{"BitOfInputPair", "ir32:12.5", "did you mean irbit:12.5?"},
                    Mistake{"BitThatNoRegisterHas", "hr:12.16", "not \"12.16\""},
                    Mistake{"RegisterWithoutBit", "hrbit:12", "did you mean hrbit:12.0?"},
                    Mistake{"SixteenthBit", "hrbit:12.16", "bit from 0 to 15"},
                    Mistake{"ThreeParts", "irbit:1.2.3", "REGISTER.BIT"},
                    Mistake{"HexadecimalAddress", "hr:0x10", "did you mean hr:16?"},
                    Mistake{"SixDigitHoldingRegister", "hr32:400003", "did you mean hr32:2?"},
                    Mistake{"SixDigitInputRegister", "ir:365536", "did you mean ir:65535?"},
                    Mistake{"SixDigitInput", "input:100001", "did you mean input:0?"},
                    Mistake{"RegisterBeyondTheTable", "hr:65536", "0 to 65535"},
                    Mistake{"SignInAddress", "hr:+1", "0 to 65535, not \"+1\""},
                    Mistake{"BlankBehindAddress", "hr:1 ", "0 to 65535, not \"1 \""},
                    Mistake{"LastRegisterHasNoPair", "hr32:65535", "end at register 65536"},
                    Mistake{"RunBeyondTheTable", "coil:65530*7", "end at bit 65536"},
                    Mistake{"BitsBeyondTheTable", "irbit:65535.15*2", "end at register 65536"},
                    Mistake{"CountZero", "hr:1*0", "from 1 on, not \"0\""},
                    Mistake{"CountEmpty", "hr:1*", "from 1 on, not \"\""},
                    Mistake{"CountThatOverflows", "hr32:1*4294967297", "from 1 on"},
                    Mistake{"PlaceHoldersInText", "hr:%1%2", "not \"%1%2\""}),
    [](const auto &row) { return row.param.name; });

class VariableFile : public testing::Test
{
protected:
    std::optional<QList<Variable>> read(const QByteArray &content)
    {
        EXPECT_TRUE(m_file.open());
        m_file.write(content);
        m_file.close();
        return readVariableFile(m_file.fileName(), &m_error);
    }

    QTemporaryFile m_file;
    QString m_error;
};

TEST_F(VariableFile, HoldsNamesCommentsAndBlankLines)
{
    const auto variables = read("# tank farm\r\n\r\n  2/hr:10*2\tlevel  of tank 1 # mm\r\nhr:0");
    ASSERT_TRUE(variables) << qPrintable(m_error);
    ASSERT_EQ(variables->size(), 2);
    EXPECT_EQ(variables->at(0).name, QLatin1String("level of tank 1"));
    EXPECT_EQ(variables->at(0).unit, 2);
    EXPECT_EQ(variables->at(1).name, QLatin1String("hr:0"));
}

TEST_F(VariableFile, NamesFileAndLineOfAMistake)
{
    EXPECT_FALSE(read("hr:0\n# fine so far\nhr:12.5 level\nhr:x\n"));
    EXPECT_TRUE(m_error.startsWith(m_file.fileName() + QLatin1String(":3: variable \"hr:12.5\"")))
        << qPrintable(m_error);
}

TEST_F(VariableFile, WithoutVariablesIsRefused)
{
    EXPECT_FALSE(read("# nothing yet\n"));
    EXPECT_TRUE(m_error.endsWith(QLatin1String("holds no variable"))) << qPrintable(m_error);
}

TEST_F(VariableFile, ThatCannotBeReadIsNamed)
{
    for (const char *path : {"/no/such.list", "/dev/zero", "/"}) {
        EXPECT_FALSE(readVariableFile(QString::fromLatin1(path), &m_error)) << path;
        EXPECT_TRUE(m_error.contains(QLatin1String(path))) << qPrintable(m_error);
    }
}

} // namespace
