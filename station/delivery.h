// SPDX-License-Identifier: MIT
/// \file
/// What a connection sends in reply to one request, and how. Faults change it (fault_application.h), the
/// connection carries it out. Plain data, without a lock.

#pragma once

#include <QtCore/QByteArray>

struct Delivery
{
    enum Ending { Stay, Close, Reset };

    QByteArray reply;       ///< empty: nothing is sent
    QByteArray replyBefore; ///< to the station's request before this one
    int delay = 0;          ///< milliseconds before it is sent; later requests wait
    int late = 0;           ///< milliseconds before it is sent; later requests are answered meanwhile
    int copies = 1;         ///< sent back to back
    int repeatAfter = -1;   ///< milliseconds after which it is sent again; -1: never
    int floodSeconds = 0;   ///< above 0: sent again and again for so long
    bool heldBack = false;  ///< sent together with the connection's next reply
    Ending ending = Stay;   ///< what happens to the connection instead of a reply
    int refuseSeconds = 0;  ///< above 0: all connections end and new ones are refused for so long, no reply
};
