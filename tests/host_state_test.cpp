// SPDX-License-Identifier: MIT
// What the host decides and counts without a socket: the link, units, passes, ages, figures.

#include "host_words.h"
#include "../host/link/link_state.h"
#include "../host/link/poll_pass.h"
#include "../host/explain/statistics.h"
#include "../host/link/unit_switch.h"
#include "../host/explain/value_state.h"
#include "../host/explain/write_outcome.h"

#include <tuple>

namespace {

TEST(LinkState, BackOffDoublesUpToTheLongestUntilAnAnswer)
{
    LinkState link({1000, 5000});
    qint64 now = 0;
    for (const int delay : {1000, 2000, 4000, 5000, 5000}) {
        link.lost(LinkCause::Refused, now);
        EXPECT_EQ(link.at(now + delay - 1), LinkState::BackingOff) << delay;
        now += delay;
        EXPECT_EQ(link.at(now), LinkState::Connecting) << delay;
    }
    link.opened();
    link.lost(LinkCause::Closed, now);
    EXPECT_EQ(link.at(now + 4999), LinkState::BackingOff) << "taken and dropped is no better than refused";
    link.at(now += 5000);
    link.opened();
    link.answered();
    link.lost(LinkCause::Closed, now);
    EXPECT_EQ(link.at(now), LinkState::Connecting) << "a first reopening costs nothing";
    link.lost(LinkCause::Refused, now);
    EXPECT_EQ(link.at(now + 1000), LinkState::Connecting) << "the back-off starts anew";
}

TEST(LinkState, ALossBacksOffUnlessItTookATimeOutOrFollowedAnAnswer)
{
    using Row = std::tuple<LinkCause, LinkState::State>;
    const Row rows[] = {{LinkCause::Silent, LinkState::Connecting},    {LinkCause::CutOff, LinkState::Connecting},
                        {LinkCause::Closed, LinkState::BackingOff},    {LinkCause::HeldBack, LinkState::BackingOff},
                        {LinkCause::BadHeader, LinkState::BackingOff}, {LinkCause::Unasked, LinkState::BackingOff}};
    for (const auto &[cause, unanswered] : rows) {
        for (const bool hasAnswered : {false, true}) {
            LinkState link({1000, 5000});
            link.opened();
            if (hasAnswered)
                link.answered();
            link.sent();
            link.lost(cause, 0);
            EXPECT_EQ(link.at(0), hasAnswered ? LinkState::Connecting : unanswered) << qPrintable(linkCauseText(cause));
        }
    }
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
    UnitSwitch never(0, 1000);
    EXPECT_FALSE(never.gaveUp(7, 0));
}

TEST(PollPass, EndsWhenAnyRequestComesRoundAgain)
{
    RW_VAR first, second;
    second.station = 2;
    PollPass pass;
    EXPECT_FALSE(pass.isOverAt(first));
    EXPECT_FALSE(pass.isOverAt(second));
    EXPECT_TRUE(pass.isOverAt(second)) << "the first one may be off by now";
    EXPECT_FALSE(pass.isOverAt(first));
}

TEST(ValueState, AsOldAsItsOldestPart)
{
    ValueState value(variable(QStringLiteral("hr:100*4")));
    EXPECT_EQ(value.ageText(0, 1000), QStringLiteral("never"));
    value.store({1, 5, 90, 12}, "first", 1000);
    EXPECT_EQ(value.ageText(1000, 1000), QStringLiteral("never")) << "half of it is not read yet";
    value.store({1, 5, 102, 50}, "both", 3000);
    EXPECT_FALSE(value.hasChanged()) << "the first whole value is no change";
    EXPECT_EQ(value.ageText(3000, 2000), QStringLiteral("fresh"));
    EXPECT_EQ(value.ageText(3100, 2000), QStringLiteral("old 2.1 s"));
    value.store({1, 5, 90, 12}, "other", 4000);
    EXPECT_TRUE(value.hasChanged());
    value.fail(QStringLiteral("no reply"));
    EXPECT_EQ(value.ageText(4000, 2000), QStringLiteral("failed: no reply, old 1.0 s"));
    value.store({1, 5, 90, 12}, "other", 5000);
    EXPECT_FALSE(value.hasChanged());
    EXPECT_EQ(value.failure(), QString());
}

TEST(UnitStatistics, OnlyWhatWasSentCountsAndOnlyLostTimeIsLost)
{
    UnitStatistics unit;
    const int each = 1000; // microseconds
    unit.add({Exchange::Answered, bytes("0000 0000 0005 01 03 02 0001"), LinkCause::None, ReplyFault::None, each, {}});
    unit.add({Exchange::NoReply, "", LinkCause::CutOff, ReplyFault::None, each, {}});
    unit.add({Exchange::NoReply, "", LinkCause::HeldBack, ReplyFault::OtherUnit, each, {}});
    unit.add({Exchange::NotSent, "", LinkCause::Refused, ReplyFault::None, each, {}});
    unit.add({Exchange::NoReply, "", LinkCause::Stopped, ReplyFault::None, each, {}});
    EXPECT_EQ(std::tie(unit.requests, unit.good, unit.timeOuts), std::make_tuple(3, 1, 1));
    EXPECT_DOUBLE_EQ(unit.lostPercent(4 * each), 50.0);
}

TEST(RoundTrips, PercentilesOfTheLastThousand)
{
    RoundTrips trips;
    EXPECT_EQ(trips.percentile(50), 0);
    trips.add(5);
    EXPECT_EQ(trips.percentile(50), 5);
    for (int i = 1; i <= 1000; ++i)
        trips.add(i);
    EXPECT_EQ(trips.percentile(50), 500);
    EXPECT_EQ(trips.percentile(99), 990);
}

TEST(WriteOutcome, ClaimsOnlyWhatWasAcknowledged)
{
    using Row = std::tuple<int, int, bool, const char *, WriteOutcome::End, const char *>;
    const Row rows[] = {
        {1, 0, false, "no reply", WriteOutcome::Failed, "not done: no reply"}, // to the read half of a bit write
        {1, 0, true, "exception 2: x", WriteOutcome::Unknown,           // to the retry after a time-out
         "outcome unknown: exception 2: x; it may or may not have been carried out"},
        {3, 1, false, "exception 2: x", WriteOutcome::Failed, "1 of 3 requests acknowledged, then refused with exception 2: x"},
        {1, 0, false, "", WriteOutcome::Failed, "not done: stopped before it was sent"},
    };
    for (const auto &[requests, served, mayBeDone, failure, code, text] : rows) {
        WriteItem item;
        item.variable = variable(QStringLiteral("hr:1"));
        item.requests = item.queued = requests;
        const bool isEnded = *failure;
        const ItemResult result = {served, isEnded, isEnded, mayBeDone, QString::fromLatin1(failure)};
        const WriteOutcome outcome = writeOutcome(item, result);
        EXPECT_EQ(outcome.end, code) << text;
        EXPECT_EQ(outcome.text.toStdString(), text);
    }
}

} // namespace
