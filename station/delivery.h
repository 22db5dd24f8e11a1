// SPDX-License-Identifier: MIT
/// \file
/// The reply to one request, and how to send it. Faults change it (fault_application.h); the connection sends
/// it. Plain data without a lock.

#pragma once

#include <QtCore/QByteArray>

struct Delivery
{
    enum Ending { Stay, Close, Reset };

    QByteArray reply;       ///< empty: nothing is sent
    QByteArray replyBefore; ///< the reply to the station's previous request
    int delay = 0;          ///< milliseconds before the reply is sent; later requests wait
    int late = 0;           ///< milliseconds before the reply is sent; later requests are answered meanwhile
    int copies = 1;         ///< number of copies of the reply, sent without a pause
    int repeatAfter = -1;   ///< milliseconds after which the reply is sent again; -1: never
    int floodSeconds = 0;   ///< above 0: the reply is sent again and again for this time
    bool heldBack = false;  ///< the reply is sent together with the next reply of the connection
    Ending ending = Stay;   ///< Close or Reset: the connection ends, and no reply is sent
    int refuseSeconds = 0;  ///< above 0: no reply; all connections end, new ones are refused for this time
};
