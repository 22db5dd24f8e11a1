// SPDX-License-Identifier: MIT
// What the host explains: variables and lists of them, values and frames.

#include "../host/explain/frame_text.h"
#include "../host/explain/value_text.h"
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
    const std::tuple<const char *, const char *, int, const char *> rows[] = {
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
        {"digit of the table", "1x:5", 0, "did you mean input:4?"},
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
        {";;\nvariable;value\n;;\nhr:0*2:text;1,5", "1/hr:0*2:text:AB, hr:0*2:text, 1, , 1,5; "},
        {"hr:0\n# fine so far\nhr:12.5 level\nhr:x\n", ":3: variable \"hr:12.5\""},
        {"variable,type\nhr:0,float\n", ":2: variable \"hr:0:float\""},
        {"variable,colour\n", ":1: there is no column \"colour\""},
        {"unit;name\n1;level", ":1: no column is called \"variable\""},
        {"hr:1 K\xfchlung", ":1: it is no UTF-8 text"},
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

TEST(Value, BecomesBytesAndIsShownSoThatItCanBeTypedOrIsRefusedWithAReason)
{
    struct Row
    {
        const char *name, *variable, *typed;
        const char *bytes; ///< hexadecimal, as the driver takes them; nothing when the value is refused
        const char *shown; ///< or what the error must say
        double scale = 1;
    };
    const Row rows[] = {
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
        {"too many values", "hr:0", "1 2", "", "takes 1 value with commas or blanks between them, not 2"},
    };

    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Variable of = variable(QString::fromLatin1(row.variable));
        of.scale = row.scale;
        QString error;
        const auto typed = parseValues(of, QString::fromLatin1(row.typed), &error);
        EXPECT_EQ(typed.value_or(QByteArray()).toHex(' ').toStdString(), row.bytes) << qPrintable(error);
        const QString shown = typed ? valueText(of, *typed) : error;
        EXPECT_TRUE(typed ? shown == QLatin1String(row.shown) : shown.contains(QLatin1String(row.shown))) << qPrintable(shown);
        EXPECT_TRUE(!typed || parseValues(of, shown, &error) == typed) << qPrintable(error);
    }
}

TEST(Value, IsShownAsFarAsBytesHoldItWhateverTheyHold)
{
    EXPECT_EQ(valueText(variable(QStringLiteral("hr:0*2")), bytes("341256")), QStringLiteral("4660"));
    EXPECT_EQ(valueText(variable(QStringLiteral("hr32:0:float")), bytes("0000c0ff")), QStringLiteral("nan")) << "a sign is set";
}

const FrameKind request = FrameKind::Request;
const FrameKind reply = FrameKind::Reply;
const FrameKind remote = FrameKind::Remote;

TEST(Frame, IsSummedUpInOneLineOrNamesItsOneFault)
{
    const std::tuple<const char *, FrameKind, const char *, const char *> rows[] = {
        {"read coils", request, "0000 0000 0006 01 01 0008 0010", "unit 1: read coils 8-23"},
        {"write coil on", request, "0000 0000 0006 01 05 0005 FF00", "unit 1: write coil 5: on"},
        {"write coils", request, "0000 0000 0009 01 0F 0002 000A 02 0502", "unit 1: write coils 2-11: 1 0 1 0 0 0 0 0 0 1"},
        {"write registers", request, "0000 0000 000B 00 10 000A 0002 04 1234 5678",
         "unit 0: write registers 10-11: 0x1234 0x5678"},
        {"echo of write registers", reply, "0000 0000 0006 01 10 000A 0002", "unit 1: write registers 10-11"},
        {"bits", reply, "0000 0000 0005 01 02 02 0501", "unit 1: read discrete inputs: 1 0 1 0 0 0 0 0 1 0 0 0 0 0 0 0"},
        {"many registers", reply, "0000 0000 0015 01 03 12 000100020003000400050006000700080009",
         "unit 1: read holding registers: 0x0001 0x0002 0x0003 0x0004 0x0005 0x0006 0x0007 0x0008 ..."},
        {"exception", reply, "0000 0000 0003 01 83 02", "unit 1: exception 2, illegal data address, to read holding registers"},
        {"remote read", remote, "16 00 00 02 01 0000 00000010 0002 00000000 00000000 2B",
         "station 1: remote read coil:16, 2 bytes of eight bits"},
        {"remote write", remote, "18 05 01 02 01 0005 00000064 0001 00000000 00000000 3412 D1",
         "station 1: remote write hr:100, 1 register"},
        {"other protocol", request, "0000 0001 0006 01 03 0000 0001", "protocol identifier 1"},
        {"length field", request, "0000 0000 0007 01 03 0000 0001", "length field says 7, but 6 bytes"},
        {"no register", request, "0000 0000 0006 01 03 0000 0000", "quantity 0, the protocol allows 1 to 125"},
        {"too many bits", request, "0000 0000 0006 01 02 0000 07D1", "quantity 2001, the protocol allows 1 to 2000"},
        {"beyond the table", request, "0000 0000 0006 01 03 FFFF 0002", "passes the last address"},
        {"coil half on", request, "0000 0000 0006 01 05 0005 FF01", "FF 00 for on"},
        {"byte count of write", request, "0000 0000 000B 01 10 000A 0003 04 1234 5678", "the quantity takes 6 bytes"},
        {"byte count of reply", reply, "0000 0000 0007 01 03 02 1234 5678", "byte count 2, but 4 data bytes"},
        {"odd byte count", reply, "0000 0000 0006 01 03 03 123456", "registers take two bytes each"},
        {"empty reply", reply, "0000 0000 0003 01 01 00", "carries nothing"},
        {"cut in the quantity", request, "0000 0000 0005 01 03 0000 00", "ends in \"quantity\", bytes missing: 1"},
        {"unused bytes", reply, "0000 0000 0004 01 83 02 00", "does not use: 1"},
        {"exception as request", request, "0000 0000 0003 01 83 02", "that of an exception reply"},
        {"remote checksum", remote, "16 00 00 02 01 0000 00000010 0002 00000000 00000000 2C",
         "checksum is 44, but the bytes before it sum up to 43"},
        {"remote length", remote, "17 00 00 02 01 0000 00000010 0002 00000000 00000000 2C", "says 23, but there are 22"},
        {"remote access", remote, "16 00 02 02 01 0000 00000010 0002 00000000 00000000 2D", "neither 0, a read"},
        {"remote read of registers", remote, "16 00 00 02 01 0005 00000010 0002 00000000 00000000 30", "only areas 0 and 1"},
    };
    for (const auto &[what, kind, hex, expected] : rows) {
        const FrameText text = frameText(bytes(hex), kind);
        const QString summary = text.summary(), fault = text.faults.value(0);
        EXPECT_TRUE(fault.isEmpty() ? summary == QLatin1String(expected) : fault.contains(QLatin1String(expected)))
            << what << ": " << qPrintable(summary);
        EXPECT_TRUE(summary.endsWith(fault) && text.faults.size() < 2) << what << ": " << qPrintable(summary);
    }
}

TEST(Frame, CutAnywhereOrFilledWithAnythingIsExplainedWithoutHarm)
{
    const QByteArray whole = bytes("0000 0000 000B 01 10 000A 0002 04 1234 5678 FFFFFFFFFFFFFF");
    for (const FrameKind kind : {request, reply, remote}) {
        for (int length = 0; length < whole.size(); ++length) {
            EXPECT_EQ(frameText(whole.left(length), kind).faults.isEmpty(), kind == request && length == 17) << length;
            EXPECT_FALSE(frameText(whole.left(length).leftJustified(260, '\xFF'), kind).fields.isEmpty());
        }
    }
}

TEST(Frame, FieldsStandWithOffsetsBytesAndMeaning)
{
    const char registers[] = "0000 0000 0009 01 03 06 1234 FFFE 0000";
    const std::tuple<const char *, int, const char *> rows[] = {
        {registers, 2, "4-5 00 09 length 9 bytes follow"},
        {registers, 4, "7 03 function 3, read holding registers"},
        {registers, 7, "11-12 FF FE register +1 65534, signed -2"},
        {"0000 0000 0006 01 06 0064 0001", 5, "8-9 00 64 address 100 (40101 when counted from 1)"},
        {"0000 0000 0006 01 10 270E 0001", 5, "8-9 27 0E address 9998 (49999 when counted from 1)"},
        {"0000 0000 0006 01 05 0000 0000", 5, "8-9 00 00 address 0 (00001 when counted from 1)"},
        {"0000 0000 0006 01 02 270F 0001", 5, "8-9 27 0F address 9999 (110000 when counted from 1)"},
    };
    for (const auto &[hex, index, line] : rows)
        EXPECT_EQ(frameText(bytes(hex), hex == registers ? reply : request).fields.value(index).simplified().toStdString(), line);
}

} // namespace
