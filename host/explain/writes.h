// SPDX-License-Identifier: MIT
/// \file
/// Writes: how they are queued, and their outcome. Main thread.

#pragma once

#include "panel_state.h"

#include <QtCore/QByteArray>

/// One VARIABLE=VALUE and how it was queued.
struct WriteItem
{
    Variable variable;
    QByteArray value; ///< in the driver's host-side layout
    QString text;     ///< as typed

    int requests = 0; ///< for the whole value: one for each bit or block of registers
    int queued = 0;   ///< of these, in the queue as this item's
    int merged = 0;   ///< of the queued, put in the place of an earlier write that was not sent yet
    int replaced = 0; ///< taken over by a later write to the same place
    int dropped = 0;  ///< not queued, the queue was full
};

/// Queues every item in order, one request at a time; an item's hostItem is its position. The queue's length tells
/// whether a request was appended, merged or dropped: the driver reports nothing else. To be called before the
/// communication loop runs, with the queue empty. `block` is CommSettings::writeBlockSize, for hr32 at least 2.
void queueWrites(const DriverLibrary &driver, int block, QList<WriteItem> *items);

struct WriteOutcome
{
    /// In rising order of severity.
    enum End { Done, Failed, Unknown };

    End end = Done;
    QString text;
};

/// From how the item was queued and what the communication thread reported of it. Claims only what the station
/// acknowledged.
WriteOutcome writeOutcome(const WriteItem &item, const ItemResult &result);
