// SPDX-License-Identifier: MIT
#include "plan.h"

#include "frame_dissection.h"
#include "poll_list.h"

#include <algorithm>

namespace {

enum { MostBits = 2000, MostRegisters = 125 }; // of one request

// A request of bits may exceed eight times the block by one byte.
enum { BlockForBits = MostBits / 8 - 1, BlockForRegisters = MostRegisters };

bool isOfBits(const Span &span)
{
    return span.area < 2;
}

int endOf(const Span &span)
{
    return span.first + span.count;
}

QString rangeText(const Span &span, int first, int end)
{
    const QString noun = isOfBits(span) ? QStringLiteral("bit") : QStringLiteral("register");
    return end - first == 1 ? QStringLiteral("%1 %2").arg(noun).arg(first)
                            : QStringLiteral("%1s %2-%3").arg(noun).arg(first).arg(end - 1);
}

QString warning(const QString &text)
{
    return QStringLiteral("  WARNING   ") + text;
}

/// Passing a limit of the protocol, and values that are read in two halves.
QStringList warningsOf(const PlannedRequest &request, const QList<Variable> &variables)
{
    QStringList lines;
    const int most = isOfBits(request.span) ? MostBits : MostRegisters;
    if (request.span.count > most)
        lines << warning(
            QStringLiteral("%1 %2 in one request, the protocol allows %3: --block %4 or less cures it")
                .arg(request.span.count)
                .arg(isOfBits(request.span) ? QStringLiteral("bits") : QStringLiteral("registers"))
                .arg(most)
                .arg(isOfBits(request.span) ? BlockForBits : BlockForRegisters));
    for (const Variable &variable : variables) {
        const Span span = spanOf(variable);
        const int end = endOf(request.span);
        const bool endsWithin =
            span.overlaps(request.span) && end < endOf(span) && request.span.count % 2 != 0;
        if (variable.area >= 6 && endsWithin && (end - span.first) % 2 != 0)
            lines << warning(
                QStringLiteral("%1 is cut in the middle of a 32-bit value, which is then read in two "
                               "halves: an even --block cures it")
                    .arg(variable.name));
    }
    return lines;
}

} // namespace

QList<PlannedRequest> planRequests(const DriverLibrary &driver, const QList<Variable> &variables, int block)
{
    QList<PlannedRequest> requests;
    if (variables.isEmpty())
        return requests;
    static CommSettings settings; // the driver keeps the address
    settings = pollSettings(variables, block);
    driver.setComInfo(&settings);
    driver.registerCallBacks(nullptr, nullptr);
    const int announced = pollVariables(driver, variables);
    while (requests.size() < announced) {
        const Protocol *request = driver.nextRequest();
        if (!request)
            return {};
        requests << PlannedRequest{spanOf(request->var), request->frame, request->replyLength};
        QByteArray reply(qMax(0, request->replyLength), '\0');
        driver.handReply(&reply, reply.size());
    }
    return requests;
}

QList<Gap> gapsOf(const PlannedRequest &request, const QList<Variable> &variables)
{
    QList<Span> asked;
    for (const Variable &variable : variables) {
        if (spanOf(variable).overlaps(request.span))
            asked << spanOf(variable);
    }
    std::sort(asked.begin(), asked.end(), [](const Span &a, const Span &b) { return a.first < b.first; });

    QList<Gap> gaps;
    int covered = request.span.first; // all below is asked for, or stands in a gap
    for (const Span &span : asked) {
        if (span.first > covered)
            gaps << Gap{covered, span.first - 1};
        covered = qMax(covered, endOf(span));
    }
    if (covered < endOf(request.span))
        gaps << Gap{covered, endOf(request.span) - 1};
    return gaps;
}

QStringList planLines(const PlannedRequest &request, const QList<Variable> &variables)
{
    QStringList lines{dissectModbus(request.frame, false).summary};
    lines << QStringLiteral("  request   function %1, first %2, count %3, reply %4 bytes")
                 .arg(static_cast<quint8>(request.frame.at(7)))
                 .arg(request.span.first)
                 .arg(request.span.count)
                 .arg(request.replyLength);
    lines << QStringLiteral("  bytes     ") + QString::fromLatin1(request.frame.toHex(' ').toUpper());
    for (const Variable &variable : variables) {
        const Span span = spanOf(variable);
        if (!span.overlaps(request.span))
            continue;
        const int first = qMax(span.first, request.span.first);
        const int end = qMin(endOf(span), endOf(request.span));
        lines << QStringLiteral("  carries   %1: %2%3")
                     .arg(variable.name, rangeText(span, first, end),
                          end - first < span.count ? QStringLiteral(", a part of it") : QString());
    }
    for (const Gap &gap : gapsOf(request, variables))
        lines << QStringLiteral("  gap       %1, which nobody asked for")
                     .arg(rangeText(request.span, gap.first, gap.last + 1));
    return lines + warningsOf(request, variables);
}
