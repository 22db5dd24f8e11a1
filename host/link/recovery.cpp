// SPDX-License-Identifier: MIT
#include "recovery.h"

Recovery recoveryAfter(LinkCause cause, const StreamFacts &facts)
{
    const bool isOrderKnown = facts.policy == AfterTimeout::Numbers && facts.numbersAreEchoed;
    switch (cause) {
    case LinkCause::None:
    case LinkCause::Stopped: // nothing more is sent
        return Recovery::None;
    case LinkCause::Silent:
    case LinkCause::HeldBack:
    case LinkCause::Unasked: // the stream can be read on; only the order of its replies is in doubt
        if (isOrderKnown && facts.silentInRow < SilentRequestsOfDeadPeer)
            return Recovery::None;
        break;
    case LinkCause::CutOff: // the next reply would be taken for the rest of this one, which may be lost
        break;
    default:
        return Recovery::Drop;
    }
    return facts.policy == AfterTimeout::Drain ? Recovery::Drain : Recovery::Drop;
}
