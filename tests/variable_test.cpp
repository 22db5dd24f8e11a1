// SPDX-License-Identifier: MIT
#include "variable.h"

#include <QtCore/QTemporaryFile>

#include <gtest/gtest.h>

namespace {

struct Written
{
    const char *name, *text;
    int unit, area;
    const char *addressText;
    int address, count, driverCount;
};

const Written writtenVariables[] = {
    {"unit and count left out", "coil:17", 1, 0, "17", 17, 1, 1},
    {"all parts", "2/input:5*8", 2, 1, "5", 5, 8, 8},
    {"bit of input register", "irbit:3.4", 1, 2, "3.4", 52, 1, 1},
    {"bits run into the next register", "hrbit:0.15*2", 1, 3, "0.15", 15, 2, 2},
    {"leading zeros are decimal", "ir:0010", 1, 4, "10", 10, 1, 1},
    {"last register of last unit", "255/hr:65535", 255, 5, "65535", 65535, 1, 1},
    {"last input pair", "ir32:65534", 1, 6, "65534", 65534, 1, 2},
    {"whole table of pairs", "0/hr32:0*32768", 0, 7, "0", 0, 32768, 65536},
    {"whole table of register bits", "hrbit:0.0*1048576", 1, 3, "0.0", 0, 1048576, 1048576},
};

TEST(Variable, IsReadInAllItsParts)
{
    for (const Written &row : writtenVariables) {
        SCOPED_TRACE(row.name);
        QString error;
        const auto variable = parseVariable(QString::fromLatin1(row.text), &error);
        ASSERT_TRUE(variable) << qPrintable(error);
        EXPECT_EQ(variable->name, QLatin1String(row.text));
        EXPECT_EQ(variable->unit, row.unit);
        EXPECT_EQ(variable->area, row.area);
        EXPECT_EQ(variable->addressText, QLatin1String(row.addressText));
        EXPECT_EQ(variable->address, row.address);
        EXPECT_EQ(variable->count, row.count);
        EXPECT_EQ(variable->driverCount(), row.driverCount);
    }
}

struct Mistake
{
    const char *name, *text;
    const char *hint; ///< what the line must say
};

const Mistake mistakes[] = {
    {"no colon", "hr100", "such as hr:100"},
    {"count ahead of the colon", "hr*2:1", "such as hr:100"},
    {"unit too high", "256/hr:1", "0 to 255, not \"256\""},
    {"unit empty", "/hr:1", "0 to 255, not \"\""},
    {"area in capitals", "HR:1", "areas are coil, input"},
    {"bit of holding register", "hr:12.5", "did you mean hrbit:12.5?"},
    {"bit of input pair", "ir32:12.5", "did you mean irbit:12.5?"},
    {"bit that no register has", "hr:12.16", "not \"12.16\""},
    {"register without bit", "hrbit:12", "did you mean hrbit:12.0?"},
    {"sixteenth bit", "hrbit:12.16", "bit from 0 to 15"},
    {"three parts", "irbit:1.2.3", "REGISTER.BIT"},
    {"hexadecimal address", "hr:0x10", "did you mean hr:16?"},
    {"six digit holding register", "hr32:400003", "did you mean hr32:2?"},
    {"six digit input register", "ir:365536", "did you mean ir:65535?"},
    {"six digit input", "input:100001", "did you mean input:0?"},
    {"register beyond the table", "hr:65536", "0 to 65535"},
    {"sign in address", "hr:+1", "0 to 65535, not \"+1\""},
    {"blank behind address", "hr:1 ", "0 to 65535, not \"1 \""},
    {"last register has no pair", "hr32:65535", "end at register 65536"},
    {"run beyond the table", "coil:65530*7", "end at bit 65536"},
    {"bits beyond the table", "irbit:65535.15*2", "end at register 65536"},
    {"count zero", "hr:1*0", "from 1 on, not \"0\""},
    {"count that overflows", "hr32:1*4294967297", "from 1 on"},
    {"place holders in text", "hr:%1%2", "not \"%1%2\""},
};

TEST(Variable, ThatIsMistakenGetsOneLineThatSaysWhatWouldBeRight)
{
    for (const Mistake &row : mistakes) {
        QString error;
        EXPECT_FALSE(parseVariable(QString::fromLatin1(row.text), &error)) << row.name;
        EXPECT_TRUE(error.startsWith(QStringLiteral("variable \"%1\": ").arg(QLatin1String(row.text)))) << qPrintable(error);
        EXPECT_TRUE(error.contains(QLatin1String(row.hint))) << row.name << ": " << qPrintable(error);
        const QLatin1String suggestion("did you mean");
        EXPECT_EQ(error.contains(suggestion), QString::fromLatin1(row.hint).contains(suggestion)) << qPrintable(error);
    }
}

class VariableFile : public testing::Test
{
protected:
    std::optional<QList<Variable>> read(const QByteArray &content)
    {
        EXPECT_TRUE(m_file.open() && m_file.resize(0));
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

TEST_F(VariableFile, WithAMistakeOrNoVariableIsRefused)
{
    EXPECT_FALSE(read("hr:0\n# fine so far\nhr:12.5 level\nhr:x\n"));
    EXPECT_TRUE(m_error.startsWith(m_file.fileName() + QLatin1String(":3: variable \"hr:12.5\""))) << qPrintable(m_error);
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
