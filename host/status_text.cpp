// SPDX-License-Identifier: MIT
#include "status_text.h"

namespace {

struct StatusClass
{
    int first;
    int last; ///< classes of errors hold twelve codes, shifted by the hostId of the request
    const char *text;
    const char *cause;
    const char *cure;
};

const char badKindCause[] = "the host queued a record whose rwFlag is neither 0 (read) nor 1 (write)";
const char badKindCure[] = "set rwFlag before AddListOnceReadVar, AddListWriteVar or AddListReadVar";
const char silenceCause[] = "unit switched off, unit number that nobody has, a gateway's line down, or a "
                            "time-out shorter than the reply takes";
const char silenceCure[] =
    "check unit number and wiring; ask the unit alone (modbus-panel read); raise --timeout";
const char lengthCause[] =
    "an exception reply, which is 9 bytes long; a late reply to another request; a reply cut off";
const char lengthCure[] =
    "look at the frame with --trace; exception 2 names an address that the unit lacks, often in "
    "a gap that a grouped read bridges (modbus-panel plan)";

const StatusClass classes[] = {
    {0, 0, "failed, and will be sent again", "any failure while retries are left",
     "none needed; the code that follows when the retries are used up tells the reason"},
    {1, 1, "done", "a reply of the expected length, or a broadcast sent", "none needed"},
    {11, 22, "neither a read nor a write", badKindCause, badKindCure},
    {41, 52, "no reply", silenceCause, silenceCure},
    {71, 82, "reply of a wrong length", lengthCause, lengthCure},
    {100, 100, "remote: accepted, the variable is not complete",
     "a write or a further reply of a remote link", "none needed"},
    {111, 122, "remote: neither a read nor a write", badKindCause, badKindCure},
    {141, 152, "remote: no reply", silenceCause,
     "check the peer and its link; a linkId other than that of the settings makes a reply count as remote"},
    {171, 182, "remote: reply of a wrong length", "the peer does not speak this form, or cut its reply off",
     "compare the bytes (--trace) with the frames that the peer's maker documents"},
    {200, 200, "unknown", "the driver never makes it", "look for what else sets the status"},
};

const StatusClass *classOf(int code)
{
    for (const StatusClass &candidate : classes) {
        if (code >= candidate.first && code <= candidate.last)
            return &candidate;
    }
    return nullptr;
}

QString codesOf(const StatusClass &of)
{
    return of.first == of.last ? QString::number(of.first)
                               : QStringLiteral("%1-%2").arg(of.first).arg(of.last);
}

QString hostIdText(const StatusClass &of, int code)
{
    const int shift = code - of.first;
    return shift == 0 ? QStringLiteral("not 1 to 11: nothing is added to %1").arg(of.first)
                      : QStringLiteral("%1, added to %2").arg(shift).arg(of.first);
}

} // namespace

QString statusText(int code)
{
    const StatusClass *of = classOf(code);
    return of ? QString::fromLatin1(of->text) : QString();
}

QStringList statusExplanation(int code)
{
    const StatusClass *of = classOf(code);
    if (!of)
        return {};
    QStringList lines{QStringLiteral("%1: %2").arg(code).arg(statusText(code))};
    if (of->first != of->last) {
        lines << QStringLiteral("  class   %1").arg(codesOf(*of));
        lines << QStringLiteral("  hostId  %1").arg(hostIdText(*of, code));
    }
    lines << QStringLiteral("  cause   %1").arg(QLatin1String(of->cause));
    lines << QStringLiteral("  cure    %1").arg(QLatin1String(of->cure));
    return lines;
}

QStringList statusTable()
{
    QStringList lines{QStringLiteral("codes    meaning")};
    for (const StatusClass &row : classes)
        lines << QStringLiteral("%1  %2").arg(codesOf(row), -7).arg(QLatin1String(row.text));
    return lines;
}
