// SPDX-License-Identifier: MIT
/// \file
/// The cyclic read list: from the host's variables to the requests that are polled round and round.

#pragma once

#include <QtCore/QList>

#include "../driver/export.h"
#include "../driver/records.h"

extern "C" {

/// Replaces the whole poll list by the requests that read all items: sorted by address, neighbours
/// joined up to CommSettings::writeBlockSize registers (or eight times as many bits; below 1 nothing is
/// cut, and nothing joined that does not lie inside a neighbour). Returns the number of requests. Items
/// with a negative address are left out; an item's count is cut at the size of a whole table. An empty
/// list of items empties the poll list and returns 0.
///
/// While multiStation is 0 all requests go to defaultStation, ordered coils, discrete inputs, input
/// registers, holding registers, and areas above 7 are left out. Otherwise requests stand in the order
/// in which each station and area first appeared, and areas above 7 are kept.
///
/// The list stays the host's and is only read. Any thread, but not from a call-back; takes listMutex to
/// put the new list in the old one's place, so the cycle never sees half a list.
MODBUS_API int ReCreatReadVarList(QList<VAR_ITEM> *items);

/// Appends a copy of a finished request to readList and returns the number of requests. The caller
/// holds listMutex.
MODBUS_API int AddListReadVar(RW_VAR *var);
}
