// SPDX-License-Identifier: MIT
#include "recovery.h"

Recovery recoveryAfter(LinkCause cause, bool drain)
{
    switch (cause) {
    case LinkCause::None:
        return Recovery::None;
    case LinkCause::Silent:
    case LinkCause::CutOff:
    case LinkCause::HeldBack:
    case LinkCause::Unasked:
    case LinkCause::Stopped:
        return drain ? Recovery::Drain : Recovery::Drop;
    case LinkCause::Refused:
    case LinkCause::NotReached:
    case LinkCause::Closed:
    case LinkCause::BadHeader:
        break;
    }
    return Recovery::Drop;
}
