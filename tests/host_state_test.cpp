// SPDX-License-Identifier: MIT
// What the host decides and counts without a socket: the link, replies, units, ages, figures.

#include "../host/cli/poll_table.h"
#include "../host/cli/records.h"
#include "../host/link/link_state.h"
#include "../host/link/reply_framing.h"
#include "../host/link/transaction_numbers.h"
#include "../host/link/unit_switch.h"
#include "host_words.h"

#include <QtCore/QSet>

#include <cerrno>
#include <tuple>

namespace {

TEST(LinkState, BacksOffLongerAndLongerUntilTheLinkIsProven)
{
    enum { NotOpened = -2, NoAnswer = -1 }; // else milliseconds from the opening to an answer
    const std::tuple<const char *, int, LinkCause, int> rows[] = {
        {"refused", NotOpened, LinkCause::Refused, 1000},
        {"twice as long", NotOpened, LinkCause::Refused, 2000},
        {"and so on", NotOpened, LinkCause::Refused, 4000},
        {"up to the longest", NotOpened, LinkCause::Refused, 5000},
        {"a first reopening costs nothing", NoAnswer, LinkCause::Closed, 0},
        {"accepted and closed is no better than refused", NoAnswer, LinkCause::Closed, 5000},
        {"a time-out has been waiting enough", NoAnswer, LinkCause::Silent, 100},
        {"half a reply too", NoAnswer, LinkCause::CutOff, 100},
        {"no more openings than the floor allows", 0, LinkCause::Closed, 100},
        {"on the next connection a foreign reply is no answer", NoAnswer, LinkCause::HeldBack, 5000},
        {"one answer does not start the back-off anew", NotOpened, LinkCause::Refused, 5000},
        {"the link was proven: one reopening costs nothing again", 3000, LinkCause::Closed, 0},
        {"and the back-off starts anew", NotOpened, LinkCause::Refused, 1000},
    };
    LinkState link({1000, 5000, 100, 3000});
    qint64 now = 0;
    for (const auto &[what, answeredAfterMs, cause, waitMs] : rows) {
        link.at(now += 60000);
        if (answeredAfterMs != NotOpened)
            link.opened(now);
        if (answeredAfterMs >= 0)
            link.answered(now += answeredAfterMs);
        link.lost(cause, now);
        EXPECT_TRUE(waitMs == 0 || link.at(now + waitMs - 1) == LinkState::BackingOff) << what;
        EXPECT_EQ(link.at(now + waitMs), LinkState::Connecting) << what;
    }
}

TEST(LinkCauseText, NamesWhatIsKnownOfAConnectionThatDoesNotOpen)
{
    EXPECT_EQ(linkCauseText({LinkCause::NoAnswer, 700}), QStringLiteral("no answer within 700 ms"));
    EXPECT_EQ(linkCauseText({LinkCause::NotOpened, EMFILE}), QStringLiteral("Too many open files"));
}

TEST(TransactionNumbers, GoRoundWithoutZero)
{
    TransactionNumbers numbers(65534);
    EXPECT_EQ(numbers.next(), 65535);
    EXPECT_EQ(numbers.next(), 1);
    EXPECT_EQ(numbers.take(65535), TransactionNumbers::Old);
    EXPECT_EQ(numbers.take(65534), TransactionNumbers::Foreign) << "never given";
    EXPECT_EQ(numbers.take(2), TransactionNumbers::Foreign);
    EXPECT_EQ(numbers.take(1), TransactionNumbers::Current);
    EXPECT_EQ(numbers.take(1), TransactionNumbers::Old) << "answered already";
}

// Cuts of the stream are the fuzzer's.
TEST(ReplyFraming, Headers)
{
    const std::tuple<const char *, const char *, ReplyFraming::Result, ReplyFault> rows[] = {
        {"length 1, too short for a PDU", "0000 0000 0001 01", ReplyFraming::BadHeader, ReplyFault::BadLength},
        {"length 2, a lone function code", "0000 0000 0002 01 83", ReplyFraming::Whole, ReplyFault::None},
        {"length 254, the longest", "0000 0000 00FE 01 03", ReplyFraming::Incomplete, ReplyFault::None},
        {"length 255, too long", "0000 0000 00FF", ReplyFraming::BadHeader, ReplyFault::BadLength},
        {"length 0x0103, by its high byte too", "0000 0000 0103", ReplyFraming::BadHeader, ReplyFault::BadLength},
        {"protocol 1, known before the length", "0000 0001", ReplyFraming::BadHeader, ReplyFault::OtherProtocol},
        {"any transaction", "BEEF 0000 0003 01 83 02", ReplyFraming::Whole, ReplyFault::None},
    };
    for (const auto &[what, hex, result, fault] : rows) {
        ReplyFraming framing;
        framing.append(bytes(hex));
        QByteArray reply;
        ReplyFault found = ReplyFault::None;
        EXPECT_EQ(framing.take(&reply, &found), result) << what;
        EXPECT_EQ(found, fault) << what;
    }
}

TEST(ReplyCheck, OnlyWhatCanAnswerPasses)
{
    const char read[] = "0000 0000 0006 01 03 0064 0003";
    const char coil[] = "0000 0000 0006 01 05 0007 FF00";
    const char many[] = "0000 0000 000B 01 10 000A 0002 04 1234 5678";
    const std::tuple<const char *, const char *, const char *, ReplyFault> rows[] = {
        {"an exception", read, "0000 0000 0003 01 83 02", ReplyFault::None},
        {"another function's exception", read, "0000 0000 0003 01 84 02", ReplyFault::OtherFunction},
        {"an exception and a byte", read, "0000 0000 0004 01 83 02 00", ReplyFault::WrongByteCount},
        {"of a longer read", read, "0000 0000 000B 01 03 08 0005 0006 0007 0008", ReplyFault::WrongByteCount},
        {"a byte count unlike its bytes", read, "0000 0000 0009 01 03 04 0005 0006 0007", ReplyFault::WrongByteCount},
        {"no byte count", read, "0000 0000 0002 01 03", ReplyFault::WrongByteCount},
        {"the echo of another coil", coil, "0000 0000 0006 01 05 0008 FF00", ReplyFault::WrongEcho},
        {"the echo of another value", coil, "0000 0000 0006 01 05 0007 0000", ReplyFault::WrongEcho},
        {"another quantity", many, "0000 0000 0006 01 10 000A 0003", ReplyFault::WrongEcho},
        {"an echo cut short", many, "0000 0000 0004 01 10 000A", ReplyFault::WrongByteCount},
    };
    for (const auto &[what, request, reply, fault] : rows)
        EXPECT_EQ(checkReply(bytes(request), bytes(reply)), fault) << what;
}

TEST(UnitSwitch, OffAfterFailuresInARowAndOneProbeLater)
{
    UnitSwitch units(2, 1000);
    EXPECT_FALSE(units.gaveUp(7, 0));
    units.answered(7);
    EXPECT_FALSE(units.gaveUp(7, 0)) << "an answer starts the count anew";
    EXPECT_FALSE(units.gaveUp(8, 0)) << "units count by themselves";
    EXPECT_TRUE(units.gaveUp(7, 100));
    EXPECT_EQ(units.due(1099), QList<int>());
    EXPECT_EQ(units.due(1100), QList<int>({7}));
    EXPECT_TRUE(units.gaveUp(7, 1200)) << "one failed probe is enough";
    EXPECT_FALSE(UnitSwitch(0, 1000).gaveUp(7, 0)) << "never";
}

TEST(ValueState, AsOldAsItsOldestPart)
{
    ValueState value(variable(QStringLiteral("hr:100*4")));
    EXPECT_EQ(value.stateText(0, 1000), QStringLiteral("never"));
    value.store({1, 5, 90, 12}, "first", 1000);
    EXPECT_EQ(value.stateText(1000, 1000), QStringLiteral("never")) << "half of it is not read yet";
    value.store({1, 5, 102, 50}, "both", 3000);
    EXPECT_FALSE(value.hasChanged()) << "the first whole value is no change";
    EXPECT_EQ(value.stateText(3000, 2000), QStringLiteral("fresh"));
    EXPECT_EQ(value.stateText(3100, 2000), QStringLiteral("old 2.1 s"));
    value.store({1, 5, 90, 12}, "other", 4000);
    EXPECT_TRUE(value.hasChanged());
    value.fail({1, 5, 102, 50}, QStringLiteral("no reply"));
    EXPECT_EQ(value.stateText(4000, 2000), QStringLiteral("failed: no reply, old 1.0 s"));
    value.store({1, 5, 90, 12}, "other", 5000);
    EXPECT_FALSE(value.hasChanged());
    EXPECT_EQ(value.failure(), QStringLiteral("no reply")) << "the other half still fails";
    value.store({1, 5, 102, 50}, "other", 5000);
    EXPECT_EQ(value.stateText(5000, 2000), QStringLiteral("fresh"));
}

TEST(UnitStatistics, OnlyWhatWasSentCountsAndOnlyLostTimeIsLost)
{
    UnitStatistics unit;
    const int each = 1000; // microseconds
    unit.add({Exchange::Answered, bytes("0000 0000 0005 01 03 02 0001"), LinkCause::None, ReplyFault::None, "", each, {}});
    unit.add({Exchange::NoReply, "", LinkCause::CutOff, ReplyFault::None, "", each, {}});
    unit.add({Exchange::NoReply, "", LinkCause::HeldBack, ReplyFault::OtherUnit, "", each, {}});
    unit.add({Exchange::NotSent, "", LinkCause::Refused, ReplyFault::None, "", each, {}});
    unit.add({Exchange::NoReply, "", LinkCause::Stopped, ReplyFault::None, "", each, {}});
    EXPECT_EQ(std::tie(unit.requests, unit.good, unit.timeOuts), std::make_tuple(3, 1, 1));
    EXPECT_DOUBLE_EQ(unit.lostPercent(4 * each), 50.0);
}

TEST(RoundTrips, PercentilesOfTheLastThousand)
{
    RoundTrips trips;
    EXPECT_EQ(trips.percentile(50), 0);
    trips.add(5);
    EXPECT_EQ(trips.percentile(50), 5);
    for (int i = 1; i <= 3000; ++i)
        trips.add(i);
    EXPECT_EQ(trips.percentile(50), 2500);
    EXPECT_EQ(trips.percentile(99), 2990);
}

/// The same bytes in every variable, just read.
PanelSnapshot snapshotOf(const QList<Variable> &variables, const QByteArray &bytes)
{
    PanelSnapshot now;
    for (const Variable &variable : variables) {
        now.values.emplace_back(variable);
        now.values.back().store(now.values.back().span(), bytes, 0);
    }
    return now;
}

TEST(PollTable, ShowsAllOfItOnAnyScreen)
{
    QByteArray registers;
    for (int i = 0; i < 125; ++i)
        registers.append(static_cast<char>(i)).append('\1'); // 256 to 380
    QList<Variable> all = variables("hr:1000*125 3/hr:7");
    for (int i = 0; i < 40; ++i)
        all << variable(QStringLiteral("hr:%1").arg(i));
    PanelSnapshot now = snapshotOf(all, registers);
    now.values[1].fail(now.values[1].span(), QStringLiteral("exception 2: illegal data address"));
    for (int unit = 1; unit < 40; ++unit)
        now.units[unit].requests = 100000;
    const auto wordsOf = [](const QStringList &lines) {
        const QStringList words = lines.join(QLatin1Char(' ')).split(QLatin1Char(' '));
        return QSet<QString>(words.begin(), words.end());
    };
    for (const ScreenSize &size : {ScreenSize{24, 80}, ScreenSize{24, 60}, ScreenSize{13, 30}}) {
        PollTable table(QStringLiteral("station"), 1000);
        QStringList seen, screen = table.screen(now, size);
        EXPECT_TRUE(screen.filter(QStringLiteral("hr:")).value(0).contains(QStringLiteral("3/hr:7"))) << "failed ones first";
        for (int page = 0; page < 100 && screen.last().contains(QStringLiteral(" below")); ++page) {
            table.scroll({0, 1});
            seen += screen;
            screen = table.screen(now, size);
            EXPECT_EQ(screen.size(), size.rows);
            EXPECT_EQ(screen.first(), QStringLiteral("station"));
            for (const QString &line : screen)
                EXPECT_LE(line.size(), size.columns) << qPrintable(line);
        }
        const QStringList whole = table.lines(now);
        const QStringList values = whole.mid(whole.indexOf(QString()));
        EXPECT_EQ(wordsOf(values) - wordsOf(seen + screen), QSet<QString>()) << size.columns;
        const QString heading = QStringLiteral("VARIABLE ");
        EXPECT_EQ(table.lines(snapshotOf(variables("hr:7"), registers)).filter(heading), whole.filter(heading)) << "in place";
    }
}

TEST(Records, TakeAnyValueAndAnyName)
{
    QList<Variable> all = variables("hr32:0*4:float hr32:0*2:hex hr:4*2:text");
    all[2].name = QStringLiteral("a \"b\", c");
    all[2].measure = QString(QChar(0xb0)) + QLatin1Char('C');
    const PanelSnapshot now = snapshotOf(all, bytes("5C22C07F 0000807F 000080FF 0000C03F"));
    const std::pair<RecordForm, const char *> rows[] = {
        {RecordForm::Json, R"("values":["nan","inf","-inf",1.5]&"values":["0x7FC0225C","0x7F800000"]&"name":"a \"b\", c",&)"
                           R"("values":["\"\\\\\\x7f\\xc0"],"measure":"°C")"},
        {RecordForm::Csv, ",hr32:0*4:float,1/hr32:0*4,nan inf -inf 1.5,,&,0x7FC0225C 0x7F800000,&,\"a \"\"b\"\", c\","},
    };
    for (const auto &[form, parts] : rows) {
        const QByteArray text = record(now, {form, QStringLiteral("station"), 1000});
        for (const QByteArray &part : QByteArray(parts).split('&'))
            EXPECT_TRUE(text.contains(part)) << part.constData() << "\n" << text.constData();
    }
}

} // namespace
