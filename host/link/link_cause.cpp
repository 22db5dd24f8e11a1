// SPDX-License-Identifier: MIT
#include "link_cause.h"

#include <iterator>
#include <system_error>

namespace {

/// By LinkCause::Kind.
const char *const texts[] = {
    "connected",
    "connection refused",
    "no route to host",
    "no answer within %1 ms",
    "", // the system's text
    "no such host name",
    "the host name cannot be looked up",
    "connection closed by the peer",
    "no reply",
    "half a reply",
    "bad header",
    "reply held back",
    "unasked reply",
    "request not taken",
    "flood of unasked replies",
    "stopped while waiting",
};
static_assert(std::size(texts) == LinkCause::Stopped + 1, "each cause has a text");

} // namespace

QString linkCauseText(const LinkCause &cause)
{
    if (cause == LinkCause::NotOpened)
        return QString::fromStdString(std::generic_category().message(cause.detail));
    const QString text = QString::fromLatin1(texts[cause.kind]);
    return cause == LinkCause::NoAnswer ? text.arg(cause.detail) : text;
}
