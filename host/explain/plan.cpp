// SPDX-License-Identifier: MIT
#include "plan.h"

#include "filled.h"
#include "frame_text.h"
#include "poll_list.h"

#include "../../driver/api/codes.h"
#include "../../driver/base/modbus_wire.h"

#include <algorithm>
#include <vector>

using namespace modbus_driver;
using namespace modbus_driver::wire;

namespace {

const char *nounOf(const Span &span)
{
    return isBitArea(span.area) ? "bit" : "register";
}

QString rangeText(const Span &span, int first, int end)
{
    return filled(end - first == 1 ? "%1 %2" : "%1s %2", nounOf(span), range(first, end - first));
}

/// Warns of requests beyond a limit of the protocol, and of values that are read in two halves.
QStringList warningsOf(const PlannedRequest &request, const QList<Variable> &variables)
{
    QStringList lines;
    const bool isOfBits = isBitArea(request.span.area);
    const int most = isOfBits ? MostBitsRead : MostRegistersRead;
    if (request.span.count > most) // of bits, it may exceed eight times the block by one byte
        lines << filled("  WARNING   %1 in one request, the protocol allows %2: use --block %3 or less",
                        counted(request.span.count, nounOf(request.span)), most,
                        isOfBits ? MostBitsRead / 8 - 1 : MostRegistersRead);
    for (const Variable &variable : variables) {
        const Span span = spanOf(variable);
        const int end = request.span.end();
        const bool endsWithin = end < span.end() && request.span.count % 2 != 0;
        if (isPairArea(variable.area) && endsWithin && (end - span.first) % 2 != 0)
            lines << filled(
                "  WARNING   %1 is cut in the middle of a 32-bit value, which is then read in two "
                "halves: use an even --block",
                variable.name);
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
    std::vector<Span> spans;
    for (const PlannedRequest &request : requests)
        spans.push_back(request.span);
    const SpanIndex index(spans);
    QVector<QList<Variable>> carried(requests.size());
    for (const Variable &variable : variables) {
        for (const int at : index.overlapping(spanOf(variable)))
            carried[at] << variable;
    }
    return carried.toList();
}

QList<Gap> gapsOf(const PlannedRequest &request, const QList<Variable> &variables)
{
    QList<Span> asked;
    for (const Variable &variable : variables)
        asked << spanOf(variable);
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
    const Span &asked = request.span;
    QStringList lines{frameText(request.frame, FrameKind::Request).meaning};
    lines << filled("  request   function %1, first %2, count %3, reply %4 bytes",
                    byteAt(request.frame, FunctionAt), asked.first, asked.count, request.replyLength);
    lines << QStringLiteral("  bytes     ") + QString::fromLatin1(request.frame.toHex(' ').toUpper());
    for (const Variable &variable : variables) {
        const Span span = spanOf(variable);
        const int first = qMax(span.first, asked.first);
        const int end = qMin(span.end(), asked.end());
        lines << filled("  carries   %1: %2%3", variable.name, rangeText(span, first, end),
                        end - first < span.count ? ", a part of it" : "");
    }
    for (const Gap &gap : gapsOf(request, variables))
        lines << filled("  gap       %1, not asked for", rangeText(asked, gap.first, gap.last + 1));
    return lines + warningsOf(request, variables);
}
