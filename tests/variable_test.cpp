// SPDX-License-Identifier: MIT
#include "host_words.h"

#include <QtCore/QTemporaryFile>

#include <tuple>

namespace {

TEST(Variable, IsReadInAllItsParts)
{
    using Row = std::tuple<const char *, const char *, int, int, const char *, int, int, int>;
    const Row rows[] = {
        // unit, area, the driver's address text, address, count, the driver's count
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
    for (const auto &[what, text, unit, area, addressText, address, count, driverCount] : rows) {
        const Variable found = variable(QString::fromLatin1(text));
        EXPECT_EQ(std::make_tuple(found.unit, found.area, found.address, found.count, found.driverCount()),
                  std::make_tuple(unit, area, address, count, driverCount))
            << what;
        EXPECT_EQ(found.addressText, QLatin1String(addressText)) << what;
        EXPECT_EQ(found.name, QLatin1String(text)) << what;
    }
}

TEST(Variable, ThatIsMistakenGetsOneLineThatSaysWhatWouldBeRight)
{
    using Row = std::tuple<const char *, const char *, const char *>;
    const Row rows[] = {
        {"no colon", "hr100", "such as hr:100"},
        {"unit too high", "256/hr:1", "0 to 255, not \"256\""},
        {"unit empty", "/hr:1", "0 to 255, not \"\""},
        {"area in capitals", "HR:1", "areas are coil, input"},
        {"bit of holding register", "hr:12.5", "did you mean hrbit:12.5?"},
        {"bit of input pair", "ir32:12.5", "did you mean irbit:12.5?"},
        {"bit that no register has", "hr:12.16", "not \"12.16\""},
        {"register without bit", "hrbit:12", "did you mean hrbit:12.0?"},
        {"sixteenth bit", "hrbit:12.16", "bit from 0 to 15"},
        {"hexadecimal address", "hr:0x10", "did you mean hr:16?"},
        {"six digit holding register", "hr32:400003", "did you mean hr32:2?"},
        {"six digit input register", "ir:365536", "did you mean ir:65535?"},
        {"six digit input", "input:100001", "did you mean input:0?"},
        {"register beyond the table", "hr:65536", "0 to 65535"},
        {"sign in address", "hr:+1", "0 to 65535, not \"+1\""},
        {"last register has no pair", "hr32:65535", "end at register 65536"},
        {"run beyond the table", "coil:65530*7", "end at bit 65536"},
        {"bits beyond the table", "irbit:65535.15*2", "end at register 65536"},
        {"count zero", "hr:1*0", "from 1 on, not \"0\""},
        {"count that overflows", "hr32:1*4294967297", "from 1 on"},
        {"place holders in text", "hr:%1%2", "not \"%1%2\""},
    };
    for (const auto &[what, text, hint] : rows) {
        QString error;
        EXPECT_FALSE(parseVariable(QString::fromLatin1(text), &error)) << what;
        EXPECT_TRUE(error.startsWith(QStringLiteral("variable \"%1\": ").arg(QLatin1String(text)))) << qPrintable(error);
        EXPECT_TRUE(error.contains(QLatin1String(hint))) << what << ": " << qPrintable(error);
        const QLatin1String suggestion("did you mean");
        EXPECT_EQ(error.contains(suggestion), QByteArray(hint).startsWith("did you mean")) << qPrintable(error);
    }
}

TEST(VariableFile, HoldsNamesCommentsAndBlankLinesAndTellsItsFirstMistake)
{
    using Row = std::tuple<const char *, const char *>;
    const Row rows[] = {
        {"# tank farm\r\n\r\n  2/hr:10*2\tlevel  of tank 1 # mm\r\nhr:0", "level of tank 1, hr:0"},
        {"hr:0\n# fine so far\nhr:12.5 level\nhr:x\n", ":3: variable \"hr:12.5\""},
        {"# nothing yet\n", "holds no variable"},
    };
    for (const auto &[content, expected] : rows) {
        QTemporaryFile file;
        ASSERT_TRUE(file.open() && file.write(content) > 0 && file.flush());
        QString said;
        const auto read = readVariableFile(file.fileName(), &said);
        if (read)
            said = read->value(0).name + QLatin1String(", ") + read->value(1).name;
        EXPECT_TRUE(said.contains(QLatin1String(expected))) << qPrintable(said);
        EXPECT_EQ(said.contains(file.fileName()), !read) << qPrintable(said);
    }
}

} // namespace
