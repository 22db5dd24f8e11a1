// SPDX-License-Identifier: MIT
/// \file
/// What a connection does with the reply to one request, and what each fault makes of that.

#pragma once

#include "faults.h"

#include <QtCore/QByteArray>

struct Delivery
{
    enum Ending { Stay, Close, Reset };

    QByteArray reply;      ///< empty: nothing is sent
    int delay = 0;         ///< milliseconds before it is sent
    int copies = 1;        ///< sent back to back
    bool heldBack = false; ///< sent together with the connection's next reply
    Ending ending = Stay;  ///< what happens to the connection instead of a reply
    int refuseSeconds = 0; ///< above 0: the station goes away for so long instead of replying
};

/// Makes the fault befall the delivery. An exception is none of these: it is the station's own reply.
void befall(const Fault &fault, Delivery &delivery);
