// SPDX-License-Identifier: MIT
#include "status_text.h"

#include "../../driver/api/codes.h"

using namespace modbus_driver;

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

/// The class of errors that begins with `first`.
constexpr StatusClass errors(int first, const char *text, const char *cause, const char *cure)
{
    return {first, first + StatusCodesOfClass - 1, text, cause, cure};
}

const StatusClass classes[] = {
    {StatusRetry, StatusRetry, "failed, and will be sent again", "any failure while retries are left",
     "none needed; the code that follows when the retries are used up tells the reason"},
    {StatusDone, StatusDone, "done", "a reply of the expected length, or a broadcast sent", "none needed"},
    errors(StatusLocalBadKind, "neither a read nor a write", badKindCause, badKindCure),
    errors(StatusLocalNoReply, "no reply", silenceCause, silenceCure),
    errors(StatusLocalWrongLength, "reply of a wrong length", lengthCause, lengthCure),
    {StatusRemoteAccepted, StatusRemoteAccepted, "remote: accepted, the variable is not complete",
     "a write or a further reply of a remote link", "none needed"},
    errors(StatusRemoteBadKind, "remote: neither a read nor a write", badKindCause, badKindCure),
    errors(StatusRemoteNoReply, "remote: no reply", silenceCause,
           "check the peer and its link; a linkId other than that of the settings makes a reply count as "
           "remote"),
    errors(StatusRemoteWrongLength, "remote: reply of a wrong length",
           "the peer does not speak this form, or cut its reply off",
           "compare the bytes (--trace) with the frames that the peer's maker documents"),
    {StatusUnknown, StatusUnknown, "unknown", "the driver never returns it",
     "look for what else sets the status"},
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
