// SPDX-License-Identifier: MIT
// What the host decides and counts without a socket: the link, units, passes, ages, figures.

#include "link_state.h"
#include "poll_pass.h"
#include "statistics.h"
#include "unit_switch.h"
#include "value_state.h"
#include "write_outcome.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

const BackOffTimes times = {1000, 5000};

TEST(LinkState, BackOffDoublesUpToTheLongestAndEndsInTime)
{
    LinkState link(times);
    qint64 now = 0;
    for (const int delay : {1000, 2000, 4000, 5000, 5000}) {
        link.lost(LinkCause::Refused, now);
        EXPECT_EQ(link.at(now + delay - 1), LinkState::BackingOff) << delay;
        now += delay;
        EXPECT_EQ(link.at(now), LinkState::Connecting) << delay;
    }
}

TEST(LinkState, OnlyAnAnswerStartsTheBackOffAnew)
{
    LinkState link(times);
    link.lost(LinkCause::Refused, 0);
    link.at(1000);
    link.opened();
    link.lost(LinkCause::Closed, 1000); // taken and dropped: no better than refused
    EXPECT_EQ(link.at(2999), LinkState::BackingOff);
    link.at(3000);
    link.opened();
    link.sent();
    link.answered();
    link.lost(LinkCause::Closed, 3000);
    EXPECT_EQ(link.at(3000), LinkState::Connecting);
    link.lost(LinkCause::Refused, 3000);
    EXPECT_EQ(link.at(4000), LinkState::Connecting);
}

TEST(LinkState, WhatALossLeadsTo)
{
    using Cause = LinkCause;
    using Row = std::tuple<LinkCause, bool>;
    const Row rows[] = {{Cause::Silent, false},   {Cause::CutOff, false},  {Cause::Closed, true},
                        {Cause::BadHeader, true}, {Cause::HeldBack, true}, {Cause::Unasked, true}};
    for (const auto &[cause, backsOff] : rows) {
        for (const bool hasAnswered : {false, true}) {
            LinkState link(times);
            link.opened();
            link.sent();
            if (hasAnswered)
                link.answered();
            link.sent();
            link.lost(cause, 0);
            const auto next = backsOff && !hasAnswered ? LinkState::BackingOff : LinkState::Connecting;
            EXPECT_EQ(link.at(0), next) << qPrintable(linkCauseText(cause)) << hasAnswered;
            EXPECT_EQ(link.cause(), cause);
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

TEST(PollPass, EndsWhenARequestComesRoundAgain)
{
    const auto request = [](int station, int area, int start) {
        RW_VAR var;
        var.station = station;
        var.area = area;
        var.startAddress = start;
        return var;
    };
    PollPass pass;
    EXPECT_FALSE(pass.isOverAt(request(1, 5, 0)));
    EXPECT_FALSE(pass.isOverAt(request(2, 5, 0)));
    EXPECT_FALSE(pass.isOverAt(request(1, 4, 0)));
    EXPECT_TRUE(pass.isOverAt(request(2, 5, 0))) << "also when the first one is off by now";
    EXPECT_FALSE(pass.isOverAt(request(1, 5, 0)));
}

Variable variable(const char *text)
{
    QString error;
    return *parseVariable(QString::fromLatin1(text), &error);
}

TEST(ValueState, PlacesOnTheWire)
{
    using Row = std::tuple<const char *, Span>;
    const Row rows[] = {
        {"3/coil:13*4", {3, 0, 13, 4}}, {"input:0", {1, 1, 0, 1}}, {"irbit:2.14*4", {1, 4, 2, 2}}, {"hrbit:2.0*16", {1, 5, 2, 1}},
        {"ir:7*3", {1, 4, 7, 3}},       {"hr:7", {1, 5, 7, 1}},    {"ir32:8*2", {1, 4, 8, 4}},     {"9/hr32:8", {9, 5, 8, 2}},
    };
    for (const auto &[text, span] : rows) {
        const Span found = spanOf(variable(text));
        EXPECT_EQ(std::tie(found.unit, found.area, found.first, found.count),
                  std::tie(span.unit, span.area, span.first, span.count))
            << text;
    }
    RW_VAR bits;
    bits.startAddress = 8;
    bits.dataLength = 2;
    EXPECT_EQ(spanOf(bits).count, 16) << "bytes of bits";
}

TEST(ValueState, AsOldAsItsOldestPart)
{
    ValueState value(variable("hr:100*4"));
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

TEST(UnitStatistics, EachEndIsCountedOnceAndOnlyLostTimeIsLost)
{
    UnitStatistics unit;
    const auto add = [&unit](Exchange::End end, const char *reply, LinkCause cause, ReplyFault fault = ReplyFault::None) {
        unit.add({end, QByteArray::fromHex(reply), cause, fault, 1000, {}});
    };
    add(Exchange::Answered, "0000 0000 0005 01 03 02 0001", LinkCause::None);
    add(Exchange::Answered, "0000 0000 0003 01 83 02", LinkCause::None);
    add(Exchange::NoReply, "", LinkCause::Silent);
    add(Exchange::NoReply, "", LinkCause::CutOff);
    add(Exchange::NoReply, "", LinkCause::HeldBack, ReplyFault::OtherUnit);
    add(Exchange::NoReply, "", LinkCause::Closed);
    add(Exchange::NotSent, "", LinkCause::Refused);
    add(Exchange::NoReply, "", LinkCause::Stopped);
    EXPECT_EQ(unit.requests, 6);
    EXPECT_EQ(unit.good, 1);
    EXPECT_EQ(unit.exceptions, (std::map<int, int>{{2, 1}}));
    EXPECT_EQ(unit.timeOuts, 2);
    EXPECT_EQ(unit.heldBack, (std::map<ReplyFault, int>{{ReplyFault::OtherUnit, 1}}));
    EXPECT_EQ(unit.closed, 1);
    EXPECT_DOUBLE_EQ(unit.lostPercent(8000), 50.0);
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
    using Row = std::tuple<int, int, bool, const char *, ExitCode, const char *>;
    const Row rows[] = {
        {1, 0, false, "no reply", ExitFailed, "not done: no reply"}, // to the read half of a bit write
        {1, 0, true, "exception 2: x", ExitOutcomeUnknown,           // to the retry after a time-out
         "outcome unknown: exception 2: x; it may or may not have been carried out"},
        {3, 1, false, "exception 2: x", ExitFailed, "1 of 3 requests acknowledged, then refused with exception 2: x"},
        {1, 0, false, "", ExitFailed, "not done: stopped before it was sent"},
    };
    for (const auto &[requests, served, mayBeDone, failure, code, text] : rows) {
        WriteItem item;
        item.variable = variable("hr:1");
        item.requests = item.queued = requests;
        const bool isEnded = *failure;
        const ItemResult result = {served, isEnded, isEnded, mayBeDone, QString::fromLatin1(failure)};
        const WriteOutcome outcome = writeOutcome(item, result);
        EXPECT_EQ(outcome.code, code) << text;
        EXPECT_EQ(outcome.text.toStdString(), text);
    }
}

} // namespace
