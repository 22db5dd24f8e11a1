// SPDX-License-Identifier: MIT
/// \file
/// The four bytes of two registers, read in each order that devices use. Pure; any thread.

#pragma once

#include "variable.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

/// One line for each word and byte order of exactly four bytes as received, under a heading: the value
/// as unsigned, signed and floating-point number, and the name of the order.
QStringList byteOrderTable(QByteArray bytes);
/// The same of the value of a variable of two registers, which is in the driver's host-side layout.
QStringList byteOrderTable(const Variable &variable, QByteArray value);
