// SPDX-License-Identifier: MIT
// The plan against the driver that is really loaded; DRIVER_PATH names it.
#include "plan.h"

#include <gtest/gtest.h>

namespace {

QList<Variable> variables(const QStringList &texts)
{
    QList<Variable> read;
    QString error;
    for (const QString &text : texts)
        read << parseVariable(text, &error).value();
    return read;
}

QList<PlannedRequest> plan(const QList<Variable> &of, int block = 100)
{
    QString error;
    const auto driver = loadDriver(QStringLiteral(DRIVER_PATH), &error);
    return driver ? planRequests(*driver, of, block) : QList<PlannedRequest>();
}

/// "01 03 0000 0009, 27": the frame behind its length field, and the length of the reply.
QString wire(const PlannedRequest &request)
{
    return QStringLiteral("%1, %2")
        .arg(QLatin1String(request.frame.mid(6).toHex(' ')))
        .arg(request.replyLength);
}

QString gapText(const PlannedRequest &request, const QList<Variable> &of)
{
    QStringList texts;
    for (const Gap &gap : gapsOf(request, of))
        texts << QStringLiteral("%1-%2").arg(gap.first).arg(gap.last);
    return texts.join(QLatin1Char(' '));
}

struct Row
{
    const char *name;
    const char *variables; ///< separated by blanks
    int block;
    QStringList requests;
    QStringList gaps; ///< of each request
};

class Plan : public testing::TestWithParam<Row>
{
};

TEST_P(Plan, ListsEachRequestOnceWithItsGaps)
{
    const auto of = variables(QString::fromLatin1(GetParam().variables).split(QLatin1Char(' ')));
    QStringList requests;
    QStringList gaps;
    for (const PlannedRequest &request : plan(of, GetParam().block)) {
        requests << wire(request);
        gaps << gapText(request, of);
    }
    EXPECT_EQ(requests, GetParam().requests) << qPrintable(requests.join(QLatin1Char('\n')));
    EXPECT_EQ(gaps, GetParam().gaps) << qPrintable(gaps.join(QLatin1Char('\n')));
}

QStringList lines(std::initializer_list<const char *> texts)
{
    QStringList list;
    for (const char *text : texts)
        list << QString::fromLatin1(text);
    return list;
}

INSTANTIATE_TEST_SUITE_P(
    Lists, Plan,
    testing::Values(Row{"NeighboursShareARequest", "hr:8 hr:0*2 hr32:3", 100,
                        lines({"01 03 00 00 00 09, 27"}), lines({"2-2 5-7"})},
                    Row{"BlockKeepsNeighboursApart", "hr:8 hr:0*2", 8,
                        lines({"01 03 00 00 00 02, 13", "01 03 00 08 00 01, 11"}), lines({"", ""})},
                    Row{"LongVariablesAreCut", "ir:5*12", 8,
                        lines({"01 04 00 05 00 08, 25", "01 04 00 0d 00 04, 17"}), lines({"", ""})},
                    Row{"BitsFillWholeBytes", "coil:3*4 coil:10", 10, lines({"01 01 00 00 00 10, 11"}),
                        lines({"0-2 7-9 11-15"})},
                    Row{"BitsOfRegistersRideInRegisters", "hrbit:10.15*2 hr:12", 10,
                        lines({"01 03 00 0a 00 03, 15"}), lines({""})},
                    Row{"EachUnitHasItsOwn", "1/hr:0 2/hr:0 1/hr:3", 10,
                        lines({"01 03 00 00 00 04, 17", "02 03 00 00 00 01, 11"}), lines({"1-2", ""})},
                    Row{"AllTables", "input:0 irbit:0.0 hr:0 coil:0", 10,
                        lines({"01 01 00 00 00 08, 10", "01 02 00 00 00 08, 10", "01 04 00 00 00 01, 11",
                               "01 03 00 00 00 01, 11"}),
                        lines({"1-7", "1-7", "", ""})},
                    Row{"BroadcastExpectsNoReply", "0/hr:0", 10, lines({"00 03 00 00 00 01, 0"}),
                        lines({""})},
                    Row{"NestedVariablesLeaveNoGap", "hr:0*10 hr:2 hr:12", 100,
                        lines({"01 03 00 00 00 0d, 35"}), lines({"10-11"})}),
    [](const auto &row) { return row.param.name; });

QString text(const QList<Variable> &of, int block)
{
    QStringList all;
    for (const PlannedRequest &request : plan(of, block))
        all += planLines(request, of);
    return all.join(QLatin1Char('\n'));
}

struct Warning
{
    const char *name;
    const char *variable;
    int block;
    const char *cure; ///< empty: no warning
};

class PlanWarning : public testing::TestWithParam<Warning>
{
};

TEST_P(PlanWarning, SaysWhichBlockCuresIt)
{
    const QString shown = text(variables({QString::fromLatin1(GetParam().variable)}), GetParam().block);
    const QString cure = QString::fromLatin1(GetParam().cure);
    EXPECT_EQ(shown.contains(QLatin1String("WARNING")), !cure.isEmpty()) << qPrintable(shown);
    EXPECT_TRUE(shown.contains(cure)) << qPrintable(shown);
}

INSTANTIATE_TEST_SUITE_P(Limits, PlanWarning,
                         testing::Values(Warning{"RegistersAtTheLimit", "hr:0*200", 125, ""},
                                         Warning{"RegistersBeyondIt", "hr:0*200", 126, "--block 125 or less"},
                                         Warning{"BitsBeyondItByTheRounding", "coil:3*4000", 250,
                                                 "--block 249 or less"},
                                         Warning{"BitsCured", "coil:3*4000", 249, ""},
                                         Warning{"PairCutInHalves", "hr32:0*60", 99, "an even --block"},
                                         Warning{"PairsKeptWhole", "hr32:0*60", 98, ""}),
                         [](const auto &row) { return row.param.name; });

TEST(PlanText, NamesWhatRidesInEachRequest)
{
    auto of =
        variables({QStringLiteral("2/hr:0*12"), QStringLiteral("2/hrbit:3.1"), QStringLiteral("2/hr:14")});
    of[0].name = QStringLiteral("tank %1");
    const QString shown = text(of, 10);
    for (const char *line :
         {"unit 2: read holding registers 0-9", "request   function 3, first 0, count 10, reply 29 bytes",
          "bytes     00 00 00 00 00 06 02 03 00 00 00 0A", "carries   tank %1: registers 0-9, a part of it",
          "carries   2/hrbit:3.1: register 3", "unit 2: read holding registers 10-14",
          "carries   2/hr:14: register 14", "gap       registers 12-13, which nobody asked for"})
        EXPECT_TRUE(shown.contains(QLatin1String(line))) << line << "\n" << qPrintable(shown);
}

} // namespace
