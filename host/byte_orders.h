// SPDX-License-Identifier: MIT
/// \file
/// Four bytes of two registers read in every order that devices use. Pure; any thread.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

/// One line for each word and byte order of exactly four bytes as they came over the wire, under a heading:
/// the value as unsigned, signed and floating-point number, and what the order is called.
QStringList byteOrderTable(const QByteArray &bytes);
