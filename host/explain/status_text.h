// SPDX-License-Identifier: MIT
/// \file
/// The driver's status codes in words. Pure; any thread.

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

/// The meaning of the code, such as "no reply"; empty for a code that the driver does not return.
QString statusText(int code);

/// The code with its class, the hostId in it, usual causes and cures, one line each; empty as above.
QStringList statusExplanation(int code);

/// One line for each class of codes, under a heading.
QStringList statusTable();
