// SPDX-License-Identifier: MIT
#include "recovery.h"

namespace {

/// The stream can be read on; only the order of its replies is in doubt.
Recovery recoveryOfOrder(const StreamFacts &facts)
{
    if (facts.policy == AfterTimeout::Drain)
        return Recovery::Drain;
    const bool isOrderKnown = facts.policy == AfterTimeout::Numbers && facts.numbersAreEchoed;
    return isOrderKnown && facts.silentInRow < SilentRequestsOfDeadPeer ? Recovery::None : Recovery::Drop;
}

} // namespace

Recovery recoveryAfter(LinkCause cause, const StreamFacts &facts)
{
    switch (cause) {
    case LinkCause::None:
    case LinkCause::Stopped: // nothing more is sent
        return Recovery::None;
    case LinkCause::Silent:
    case LinkCause::HeldBack:
    case LinkCause::Unasked:
        return recoveryOfOrder(facts);
    case LinkCause::
        CutOff: // the rest of the reply may be lost, and then the next reply would be taken for it
        return facts.policy == AfterTimeout::Drain ? Recovery::Drain : Recovery::Drop;
    case LinkCause::Refused:
    case LinkCause::NoRoute:
    case LinkCause::NoAnswer:
    case LinkCause::NotOpened:
    case LinkCause::NoSuchName:
    case LinkCause::NoLookup:
    case LinkCause::Closed:
    case LinkCause::BadHeader:
    case LinkCause::Congested:
    case LinkCause::Flood:
        break;
    }
    return Recovery::Drop;
}
