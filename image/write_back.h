// SPDX-License-Identifier: MIT
/// \file
/// The second half of a bit-in-register write: the register that was read, with the bit changed, goes
/// into the write request that waits behind the read.

#pragma once

#include <QtCore/QtGlobal>

namespace image {

/// Puts `value`, with the bit of the write at the head of writeList set (first data byte 1), cleared
/// (0) or left (any other), into the second transaction of pendingList. Does nothing unless the request
/// in flight is the read half (subIndex -1) and a second transaction waits.
void completeWriteBack(quint16 value);

} // namespace image
