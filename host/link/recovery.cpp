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
    case LinkCause::CutOff: // the next reply would be taken for the rest of this one, which may be lost
        return facts.policy == AfterTimeout::Drain ? Recovery::Drain : Recovery::Drop;
    default:
        return Recovery::Drop;
    }
}
