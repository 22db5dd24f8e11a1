// SPDX-License-Identifier: MIT
// The plan against the driver that is really loaded; DRIVER_PATH names it.
#include "../host/explain/plan.h"
#include "host_words.h"

namespace {

/// What `tell` says of each request and the variables that it carries.
template <typename Tell> QString plan(const QList<Variable> &of, int block, const char *separator, Tell tell)
{
    QString error;
    const auto driver = loadDriver(QStringLiteral(DRIVER_PATH), &error);
    const QList<PlannedRequest> requests = driver ? planRequests(*driver, of, block) : QList<PlannedRequest>();
    const QList<QList<Variable>> carried = carriedVariables(requests, of);
    QStringList all;
    for (int i = 0; i < requests.size(); ++i)
        all << tell(requests[i], carried[i]);
    return all.join(QLatin1String(separator));
}

/// The frame behind its length field, the length of the reply, and the gaps.
QString wire(const PlannedRequest &request, const QList<Variable> &of)
{
    QString text = QStringLiteral("%1, %2").arg(QLatin1String(request.frame.mid(6).toHex(' '))).arg(request.replyLength);
    const QList<Gap> gaps = gapsOf(request, of);
    for (int i = 0; i < gaps.size(); ++i)
        text += QStringLiteral("%1 %2-%3").arg(QLatin1String(i == 0 ? ", gaps" : "")).arg(gaps[i].first).arg(gaps[i].last);
    return text;
}

struct Row
{
    const char *what, *variables;
    int block;
    const char *expected;
};

TEST(Plan, ListsEachRequestOnceWithItsGaps)
{
    const Row rows[] = {
        {"neighbours share a request", "hr:8 hr:0*2 hr32:3", 100, "01 03 00 00 00 09, 27, gaps 2-2 5-7"},
        {"long variables are cut", "ir:5*12", 8, "01 04 00 05 00 08, 25 | 01 04 00 0d 00 04, 17"},
        {"bits fill whole bytes", "coil:3*4 coil:10", 10, "01 01 00 00 00 10, 11, gaps 0-2 7-9 11-15"},
        {"sixteen bits are one register", "hrbit:10.0*16 hr:12", 10, "01 03 00 0a 00 03, 15, gaps 11-11"},
        {"each unit has its own", "1/hr:0 2/hr:0 1/hr:3", 10, "01 03 00 00 00 04, 17, gaps 1-2 | 02 03 00 00 00 01, 11"},
        {"a broadcast expects no reply", "0/hr:0", 10, "00 03 00 00 00 01, 0"},
        {"nested variables leave no gap", "hr:0*10 hr:2 hr:12", 100, "01 03 00 00 00 0d, 35, gaps 10-11"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(plan(variables(row.variables), row.block, " | ", wire).toStdString(), row.expected) << row.what;
}

TEST(Plan, WarnsAndSaysWhichBlockCuresIt)
{
    const Row rows[] = {
        {"registers at the limit", "hr:0*200", 125, ""},
        {"registers beyond it", "hr:0*200", 126, "--block 125 or less"},
        {"bits beyond it by the rounding", "coil:3*4000", 250, "--block 249 or less"},
        {"bits cured", "coil:3*4000", 249, ""},
        {"a pair cut in halves", "hr32:0*60", 99, "an even --block"},
        {"pairs kept whole", "hr32:0*60", 98, ""},
    };
    for (const Row &row : rows) {
        const QString shown = plan(variables(row.variables), row.block, "\n", planLines);
        EXPECT_EQ(shown.contains(QLatin1String("WARNING")), *row.expected != 0) << row.what << "\n" << qPrintable(shown);
        EXPECT_TRUE(shown.contains(QLatin1String(row.expected))) << row.what << "\n" << qPrintable(shown);
    }
}

TEST(Plan, NamesTheVariablesInEachRequest)
{
    auto of = variables("2/hr:0*12 2/hrbit:3.1 2/hr:10 2/hr:14");
    of[0].name = QStringLiteral("tank %1");
    EXPECT_EQ(plan(of, 10, "\n", planLines).toStdString(), R"(unit 2: read holding registers 0-9
  request   function 3, first 0, count 10, reply 29 bytes
  bytes     00 00 00 00 00 06 02 03 00 00 00 0A
  carries   tank %1: registers 0-9, a part of it
  carries   2/hrbit:3.1: register 3
unit 2: read holding registers 10-14
  request   function 3, first 10, count 5, reply 19 bytes
  bytes     00 00 00 00 00 06 02 03 00 0A 00 05
  carries   tank %1: registers 10-11, a part of it
  carries   2/hr:10: register 10
  carries   2/hr:14: register 14
  gap       registers 12-13, not asked for)");
}

} // namespace
