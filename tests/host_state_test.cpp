// SPDX-License-Identifier: MIT
// What the host decides and counts without a socket: the link, units, passes, ages, figures.

#include "link_state.h"
#include "poll_pass.h"
#include "statistics.h"
#include "unit_switch.h"
#include "value_state.h"
#include "write_outcome.h"

#include <gtest/gtest.h>

namespace {

const BackOffTimes times = {1000, 5000};

LinkState upAt(bool hasAnswered)
{
    LinkState link(times);
    link.opened();
    if (hasAnswered) {
        link.sent();
        link.answered();
    }
    return link;
}

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
    struct
    {
        LinkCause cause;
        bool hasAnswered;
        LinkState::State next;
    } const rows[] = {
        {LinkCause::Silent, false, LinkState::Connecting},
        {LinkCause::CutOff, false, LinkState::Connecting},
        {LinkCause::Silent, true, LinkState::Connecting},
        {LinkCause::Closed, false, LinkState::BackingOff},
        {LinkCause::Closed, true, LinkState::Connecting},
        {LinkCause::BadHeader, false, LinkState::BackingOff},
        {LinkCause::BadHeader, true, LinkState::Connecting},
        {LinkCause::HeldBack, false, LinkState::BackingOff},
        {LinkCause::HeldBack, true, LinkState::Connecting},
        {LinkCause::Unasked, false, LinkState::BackingOff},
    };
    for (const auto &row : rows) {
        LinkState link = upAt(row.hasAnswered);
        link.sent();
        link.lost(row.cause, 0);
        EXPECT_EQ(link.at(0), row.next) << qPrintable(linkCauseText(row.cause)) << row.hasAnswered;
        EXPECT_EQ(link.cause(), row.cause);
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
    struct
    {
        const char *variable;
        Span span;
    } const rows[] = {
        {"3/coil:13*4", {3, 0, 13, 4}}, {"input:0", {1, 1, 0, 1}},  {"irbit:2.14*4", {1, 4, 2, 2}},
        {"hrbit:2.0*16", {1, 5, 2, 1}}, {"ir:7*3", {1, 4, 7, 3}},   {"hr:7", {1, 5, 7, 1}},
        {"ir32:8*2", {1, 4, 8, 4}},     {"9/hr32:8", {9, 5, 8, 2}},
    };
    for (const auto &row : rows) {
        const Span span = spanOf(variable(row.variable));
        EXPECT_EQ(std::tie(span.unit, span.area, span.first, span.count),
                  std::tie(row.span.unit, row.span.area, row.span.first, row.span.count))
            << row.variable;
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

Exchange ended(Exchange::End end, const char *reply, LinkCause cause = LinkCause::None,
               ReplyFault fault = ReplyFault::None)
{
    Exchange exchange;
    exchange.end = end;
    exchange.reply = QByteArray::fromHex(reply);
    exchange.cause = cause;
    exchange.fault = fault;
    exchange.microseconds = 1000;
    return exchange;
}

TEST(UnitStatistics, EachEndIsCountedOnceAndOnlyLostTimeIsLost)
{
    UnitStatistics unit;
    unit.add(ended(Exchange::Answered, "0000 0000 0005 01 03 02 0001"));
    unit.add(ended(Exchange::Answered, "0000 0000 0003 01 83 02"));
    unit.add(ended(Exchange::NoReply, "", LinkCause::Silent));
    unit.add(ended(Exchange::NoReply, "", LinkCause::CutOff));
    unit.add(ended(Exchange::NoReply, "", LinkCause::HeldBack, ReplyFault::OtherUnit));
    unit.add(ended(Exchange::NoReply, "", LinkCause::Closed));
    unit.add(ended(Exchange::NotSent, "", LinkCause::Refused));
    unit.add(ended(Exchange::NoReply, "", LinkCause::Stopped));
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
    struct
    {
        const char *what;
        int requests, queued, merged, replaced, dropped;
        ItemResult result; // served, ended, given up, may be done, failure
        ExitCode code;
        const char *text;
    } const rows[] = {
        {"all well", 1, 1, 0, 0, 0, {1, true, false, false, {}}, ExitDone, "acknowledged"},
        {"no reply",
         1,
         1,
         0,
         0,
         0,
         {0, true, true, true, QStringLiteral("no reply")},
         ExitOutcomeUnknown,
         "outcome unknown: no reply; it may or may not have been carried out"},
        {"read half of a bit write failed",
         1,
         1,
         0,
         0,
         0,
         {0, true, true, false, QStringLiteral("no reply")},
         ExitFailed,
         "not done: no reply"},
        {"refused",
         1,
         1,
         0,
         0,
         0,
         {0, true, true, false, QStringLiteral("exception 2: x")},
         ExitFailed,
         "refused with exception 2: x"},
        {"a time-out, then refused",
         1,
         1,
         0,
         0,
         0,
         {0, true, true, true, QStringLiteral("exception 2: x")},
         ExitOutcomeUnknown,
         "outcome unknown: exception 2: x; it may or may not have been carried out"},
        {"refused in the middle",
         3,
         3,
         0,
         0,
         0,
         {1, true, true, false, QStringLiteral("exception 2: x")},
         ExitFailed,
         "1 of 3 requests acknowledged, then refused with exception 2: x"},
        {"never sent", 1, 1, 0, 0, 0, {}, ExitFailed, "not done: stopped before it was sent"},
        {"taken over", 1, 0, 0, 1, 0, {}, ExitDone, "replaced by a later write before it was sent"},
        {"queue full half-way",
         5,
         3,
         0,
         0,
         2,
         {3, true, false, false, {}},
         ExitFailed,
         "3 of 5 requests acknowledged; 2 of 5 requests dropped, the queue is full"},
    };
    for (const auto &row : rows) {
        WriteItem item;
        item.variable = variable("hr:1");
        item.requests = row.requests;
        item.queued = row.queued;
        item.merged = row.merged;
        item.replaced = row.replaced;
        item.dropped = row.dropped;
        const WriteOutcome outcome = writeOutcome(item, row.result);
        EXPECT_EQ(outcome.code, row.code) << row.what;
        EXPECT_EQ(outcome.text.toStdString(), row.text) << row.what;
    }
}

} // namespace
