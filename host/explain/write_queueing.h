// SPDX-License-Identifier: MIT
/// \file
/// Puts writes into the driver's queue one request at a time. The queue's length tells whether each was appended,
/// merged or dropped: the driver reports nothing else. To be called before the communication loop runs, with the queue
/// empty. Main thread.

#pragma once

#include "variable.h"

#include "../link/driver_library.h"

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

/// Queues every item in order; an item's hostItem is its position. `block` is
/// CommSettings::writeBlockSize, for hr32 at least 2.
void queueWrites(const DriverLibrary &driver, int block, QList<WriteItem> *items);
