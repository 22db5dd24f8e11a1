// SPDX-License-Identifier: MIT
#include "status_text.h"

#include "filled.h"

#include "../../driver/api/codes.h"

using namespace modbus_driver;

namespace {

struct StatusClass
{
    int first;
    int codes; ///< StatusCodesOfClass for errors, shifted by the hostId of the request
    const char *text;
    const char *cause;
    const char *cure;
};

const char badKindCause[] = "the host queued a record whose rwFlag is neither 0 (read) nor 1 (write)";
const char badKindCure[] = "set rwFlag before AddListOnceReadVar, AddListWriteVar or AddListReadVar";
const char silenceCause[] = "a unit that is off or not there, a gateway's line down, a time-out too short";
const char silenceCure[] = "check unit number and wiring; read from the unit alone; raise --timeout";
const char lengthCause[] = "an exception reply (9 bytes); a late reply to another request; a reply cut off";
const char lengthCure[] = "look at the frame with --trace; exception 2 names an address that the unit lacks, "
                          "often in a gap that a grouped read bridges (modbus-panel plan)";

const StatusClass classes[] = {
    {StatusRetry, 1, "failed, and will be sent again", "any failure while retries are left",
     "none needed; the code that follows when the retries are used up tells the reason"},
    {StatusDone, 1, "done", "a reply of the expected length, or a broadcast sent", "none needed"},
    {StatusLocalBadKind, StatusCodesOfClass, "neither a read nor a write", badKindCause, badKindCure},
    {StatusLocalNoReply, StatusCodesOfClass, "no reply", silenceCause, silenceCure},
    {StatusLocalWrongLength, StatusCodesOfClass, "reply of a wrong length", lengthCause, lengthCure},
    {StatusRemoteAccepted, 1, "remote: accepted, the variable is not complete",
     "a write or a further reply of a remote link", "none needed"},
    {StatusRemoteBadKind, StatusCodesOfClass, "remote: neither a read nor a write", badKindCause,
     badKindCure},
    {StatusRemoteNoReply, StatusCodesOfClass, "remote: no reply", silenceCause,
     "check the peer and its link; a linkId other than that of the settings makes a reply count as "
     "remote"},
    {StatusRemoteWrongLength, StatusCodesOfClass, "remote: reply of a wrong length",
     "the peer does not speak this form, or cut its reply off",
     "compare the bytes (--trace) with the frames that the peer's maker documents"},
    {StatusUnknown, 1, "unknown", "the driver never returns it", "look for what else sets the status"},
};

const StatusClass *classOf(int code)
{
    for (const StatusClass &of : classes) {
        if (code >= of.first && code < of.first + of.codes)
            return &of;
    }
    return nullptr;
}

} // namespace

QString statusText(int code)
{
    const StatusClass *of = classOf(code);
    return of ? asText(of->text) : QString();
}

QStringList statusExplanation(int code)
{
    const StatusClass *of = classOf(code);
    if (!of)
        return {};
    QStringList lines{filled("%1: %2", code, of->text)};
    if (of->codes > 1) {
        const int hostId = code - of->first;
        lines << filled("  class   %1", range(of->first, of->codes));
        lines << (hostId == 0 ? filled("  hostId  not 1 to 11: nothing is added to %1", of->first)
                              : filled("  hostId  %1, added to %2", hostId, of->first));
    }
    lines << filled("  cause   %1", of->cause) << filled("  cure    %1", of->cure);
    return lines;
}

QStringList statusTable()
{
    QStringList lines{asText("codes    meaning")};
    for (const StatusClass &row : classes)
        lines << filled("%1  %2", range(row.first, row.codes).leftJustified(7), row.text);
    return lines;
}
