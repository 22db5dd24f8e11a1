// SPDX-License-Identifier: MIT
#include "../host/explain/variable_list.h"

#include "host_words.h"

#include <QtCore/QTemporaryFile>

#include <tuple>

namespace {

/// Everything that a variable says of where its values are and how they are shown.
QString written(const Variable &of)
{
    return QString::fromLatin1("%1/%2:%3*%4:%5:%6")
        .arg(QString::number(of.unit), areaName(of.area), of.addressText(), QString::number(of.count), typeName(of),
             orderName(of.order, of.width()));
}

TEST(Variable, IsReadInAllItsPartsAndAMistakeGetsOneLineThatSaysWhatWouldBeRight)
{
    using Row = std::tuple<const char *, const char *, int, const char *>;
    const Row rows[] = {
        // the base, and all of the variable or what the error must say
        {"all parts of bits", "2/input:5*8:bit", 0, "2/input:5*8:bit:"},
        {"last register of last unit", "255/hr:65535:s16", 0, "255/hr:65535*1:s16:AB"},
        {"low byte first", "hr:40*5:text:BA", 0, "1/hr:40*5:text:BA"},
        {"all parts of pairs", "2/hr32:20*3:s32:DCBA", 0, "2/hr32:20*3:s32:DCBA"},
        {"order without type", "hr32:6::CDAB", 0, "1/hr32:6*1:u32:CDAB"},
        {"whole table of pairs", "0/hr32:0*32768:hex", 0, "0/hr32:0*32768:hex:ABCD"},
        {"whole table of register bits", "hrbit:0.0*1048576", 0, "1/hrbit:0.0*1048576:bit:"},
        {"counted from 1", "hr:1", 1, "1/hr:0*1:u16:AB"},
        {"first coil", "00001", 1, "1/coil:0*1:bit:"},
        {"inputs with six digits", "100001*2", 1, "1/input:0*2:bit:"},
        {"number of a pair", "2/40007*3:float:CDAB", 1, "2/hr32:6*3:float:CDAB"},
        {"number of a bit", "465536.15", 1, "1/hrbit:65535.15*1:bit:"},
        {"zeroth number", "40000", 1, "number from 1 to 65536"},
        {"run beyond the table from 1", "coil:65536*2", 1, "end at bit 65537, but bits end at 65536"},
        {"manual's number of a pair", "2/400007:float", 0, "did you mean 2/hr32:6:float? (--base 1 takes such addresses)"},
        {"six digits behind the area", "hr32:400003", 0, "did you mean hr32:2?"},
        {"six digits from 1", "ir:365536", 1, "did you mean ir:65536?"},
        {"no colon", "hr100", 0, "did you mean hr:100?"},
        {"capitals", "3/HR32:6:FLOAT:cdab", 0, "did you mean 3/hr32:6:float:CDAB?"},
        {"other words", "Input Registers 5:INT16", 0, "did you mean ir:5:s16?"},
        {"digit of the table", "1x:5", 0, "did you mean input:5?"},
        {"memory word", "%MW100", 0, "did you mean hr:100?"},
        {"hexadecimal address", "hr:0x10", 0, "did you mean hr:16?"},
        {"from to", "coils:1-5", 0, "did you mean coil:1*5?"},
        {"from to less", "hr:5-1", 0, "0 to 65535, not \"5-1\""},
        {"bit of a pair", "ir32:12.5", 0, "did you mean irbit:12.5?"},
        {"bit that no register has", "hr:12.16", 0, "not \"12.16\""},
        {"register without bit", "hrbit:12", 0, "did you mean hrbit:12.0?"},
        {"float in two registers", "hr:6*2:float:CDAB", 0, "did you mean hr32:6:float:CDAB?"},
        {"16 bits in a pair", "ir32:6:s16", 0, "did you mean ir32:6:s32?"},
        {"type of a bit", "coil:6*2:u16", 0, "did you mean coil:6*2?"},
        {"order of a pair in a register", "hr:6:u16:CDAB", 0, "no order of hr (AB, BA)"},
        {"unit too high", "256/hr:1", 0, "0 to 255, not \"256\""},
        {"sign in address", "hr:+1", 0, "0 to 65535, not \"+1\""},
        {"last register has no pair", "hr32:65535", 0, "end at register 65536"},
        {"bits beyond the table", "irbit:65535.15*2", 0, "end at register 65536"},
        {"count zero", "hr:1*0", 0, "from 1 on, not \"0\""},
        {"count that overflows", "hr32:1*4294967297", 0, "from 1 on"},
        {"too many parts", "hr:1:u16:AB:1", 0, "write [UNIT/]AREA"},
        {"place holders in text", "hr:%1%2", 0, "not \"%1%2\""},
    };
    for (const auto &[what, text, base, expected] : rows) {
        QString said;
        const auto found = parseVariable(QString::fromLatin1(text), &said, base);
        const QLatin1String hint(expected);
        EXPECT_TRUE(found ? written(*found) == hint : said.contains(hint))
            << what << ": " << qPrintable(found ? written(*found) : said);
        EXPECT_EQ(said.contains(QLatin1String("did you mean")), QByteArray(expected).startsWith("did you mean"))
            << qPrintable(said);
    }
}

TEST(VariableList, IsPlainOrCsvAndTellsItsFirstMistake)
{
    const std::pair<const char *, const char *> rows[] = {
        // place, name, scale, unit of measure, value
        {"# tank farm\r\n\r\n  2/hr:10*2\tlevel  of tank 1 # mm\r\nhr:0=5",
         "2/hr:10*2:u16:AB, level of tank 1, 1, , ; 1/hr:0*1:u16:AB, hr:0, 1, , 5; "},
        {"base 1\n40001:s16=-2 a, b", "1/hr:0*1:s16:AB, a, b, 1, , -2; "},
        {"Variable, NAME ,type\n# no row\n,,\nhr:0,\"a, \"\"b\"\" # \",u16\nhr:1,,",
         "1/hr:0*1:u16:AB, a, \"b\" # , 1, , ; 1/hr:1*1:u16:AB, hr:1, 1, , ; "},
        {"\xEF\xBB\xBF"
         "base;1;;\r\nname;order;variable;type;unit;scale;value;\r\nt;BA;40002;s16;bar;0,1;2,5;\r\n",
         "1/hr:1*1:s16:BA, t, 0.1, bar, 2.5; "},
        {"variable;value\nhr:0*2:text;1,5", "1/hr:0*2:text:AB, hr:0*2:text, 1, , 1,5; "},
        {"hr:0\n# fine so far\nhr:12.5 level\nhr:x\n", ":3: variable \"hr:12.5\""},
        {"variable,type\nhr:0,float\n", ":2: variable \"hr:0:float\""},
        {"variable,colour\n", ":1: there is no column \"colour\""},
        {"variable,scale\nhr:0,0,1\n", ":2: it has more cells"},
        {"variable,scale\nhr:0,0\n", ":2: the scale \"0\""},
        {"variable,scale\nhr:0:hex,2\n", ":2: only numbers have a scale"},
        {"variable,name\nhr:0,\"a\n", ":2: a quote is not closed"},
        {"variable,unit\nhr:0,\033[2J\n", ":2: the name or unit holds a control character"},
        {"# nothing yet\n", "holds no variable"},
    };
    for (const auto &[content, expected] : rows) {
        QTemporaryFile file;
        ASSERT_TRUE(file.open() && file.write(content) > 0 && file.flush());
        QString said;
        const auto read = readVariableList(file.fileName(), 0, &said);
        for (const ListedVariable &each : read.value_or(QList<ListedVariable>()))
            said += QString::fromLatin1("%1, %2, %3, %4, %5; ")
                        .arg(written(each.variable), each.variable.name, QString::number(each.variable.scale),
                             each.variable.measure, each.value);
        EXPECT_TRUE(read ? said == QLatin1String(expected) : said.contains(QLatin1String(expected))) << qPrintable(said);
        EXPECT_EQ(said.contains(file.fileName()), !read) << qPrintable(said);
    }
}

} // namespace
