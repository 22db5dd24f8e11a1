// SPDX-License-Identifier: MIT
#include "plan.h"

#include "filled.h"
#include "frame_text.h"
#include "poll_list.h"

#include "../../driver/api/codes.h"
#include "../../driver/base/modbus_wire.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <vector>

using namespace modbus_driver;
using namespace modbus_driver::wire;

namespace {

// A request of bits may exceed eight times the block by one byte.
enum { BlockForBits = MostBitsRead / 8 - 1, BlockForRegisters = MostRegistersRead };

QString rangeText(const Span &span, int first, int end)
{
    const QString noun = isBitArea(span.area) ? QStringLiteral("bit") : QStringLiteral("register");
    return end - first == 1 ? QStringLiteral("%1 %2").arg(noun).arg(first)
                            : QStringLiteral("%1s %2-%3").arg(noun).arg(first).arg(end - 1);
}

QString warning(const QString &text)
{
    return QStringLiteral("  WARNING   ") + text;
}

/// Warns of requests beyond a limit of the protocol, and of values that are read in two halves.
QStringList warningsOf(const PlannedRequest &request, const QList<Variable> &variables)
{
    QStringList lines;
    const int most = isBitArea(request.span.area) ? MostBitsRead : MostRegistersRead;
    if (request.span.count > most)
        lines << warning(
            QStringLiteral("%1 %2 in one request, the protocol allows %3: use --block %4 or less")
                .arg(request.span.count)
                .arg(isBitArea(request.span.area) ? QStringLiteral("bits") : QStringLiteral("registers"))
                .arg(most)
                .arg(isBitArea(request.span.area) ? BlockForBits : BlockForRegisters));
    for (const Variable &variable : variables) {
        const Span span = spanOf(variable);
        const int end = request.span.end();
        const bool endsWithin =
            span.overlaps(request.span) && end < span.end() && request.span.count % 2 != 0;
        if (isPairArea(variable.area) && endsWithin && (end - span.first) % 2 != 0)
            lines << warning(
                QStringLiteral("%1 is cut in the middle of a 32-bit value, which is then read in two "
                               "halves: use an even --block")
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

QList<QList<Variable>> carriedVariables(const QList<PlannedRequest> &requests,
                                        const QList<Variable> &variables)
{
    using Place = std::tuple<int, int, int>; // unit, area, first address
    std::multimap<Place, int> requestAt;
    int longest = 0;
    for (int i = 0; i < requests.size(); ++i) {
        const Span &span = requests.at(i).span;
        requestAt.emplace(Place{span.unit, span.area, span.first}, i);
        longest = qMax(longest, span.count);
    }
    std::vector<QList<Variable>> carried(static_cast<std::size_t>(requests.size()));
    for (const Variable &variable : variables) {
        const Span span = spanOf(variable);
        const auto end = requestAt.lower_bound(Place{span.unit, span.area, span.end()});
        for (auto it = requestAt.lower_bound(Place{span.unit, span.area, span.first - longest}); it != end;
             ++it) {
            if (span.overlaps(requests.at(it->second).span))
                carried[static_cast<std::size_t>(it->second)] << variable;
        }
    }
    return QList<QList<Variable>>(carried.begin(), carried.end());
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
    int covered = request.span.first; // every address below is asked for or in a gap
    for (const Span &span : asked) {
        if (span.first > covered)
            gaps << Gap{covered, span.first - 1};
        covered = qMax(covered, span.end());
    }
    if (covered < request.span.end())
        gaps << Gap{covered, request.span.end() - 1};
    return gaps;
}

QStringList planLines(const PlannedRequest &request, const QList<Variable> &variables)
{
    QStringList lines{frameText(request.frame, FrameKind::Request).meaning};
    lines << QStringLiteral("  request   function %1, first %2, count %3, reply %4 bytes")
                 .arg(byteAt(request.frame, FunctionAt))
                 .arg(request.span.first)
                 .arg(request.span.count)
                 .arg(request.replyLength);
    lines << QStringLiteral("  bytes     ") + QString::fromLatin1(request.frame.toHex(' ').toUpper());
    for (const Variable &variable : variables) {
        const Span span = spanOf(variable);
        if (!span.overlaps(request.span))
            continue;
        const int first = qMax(span.first, request.span.first);
        const int end = qMin(span.end(), request.span.end());
        lines << QStringLiteral("  carries   %1: %2%3")
                     .arg(variable.name, rangeText(span, first, end),
                          end - first < span.count ? QStringLiteral(", a part of it") : QString());
    }
    for (const Gap &gap : gapsOf(request, variables))
        lines << QStringLiteral("  gap       %1, not asked for")
                     .arg(rangeText(request.span, gap.first, gap.last + 1));
    return lines + warningsOf(request, variables);
}
