// SPDX-License-Identifier: MIT
/// \file
/// The four bytes of two registers, read in each order that devices use. Pure; any thread.

#pragma once

#include "variable.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

/// One line for each word and byte order of exactly four bytes, under a heading: the value as unsigned, signed and
/// floating-point number, and the name of the order. The bytes are as received, with `width` 1, or values of `width`
/// bytes in the driver's host-side layout.
QStringList byteOrderTable(QByteArray bytes, int width);
