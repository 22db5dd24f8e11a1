// SPDX-License-Identifier: MIT
/// \file
/// The text of a fault, as a command line or a test gives it:
///
///     FAULT[=VALUE][@SELECTOR=VALUE[,SELECTOR=VALUE...]]      such as  silence@unit=2,every=3
///
/// Pure functions: any thread.

#pragma once

#include "fault.h"

#include <QtCore/QList>
#include <QtCore/QStringList>

#include <optional>

/// Reads one fault. Nothing, with one line in *error (if not null), when the text is wrong in any part.
std::optional<Fault> parseFault(const QString &text, QString *error);
/// Reads several, in the same way.
std::optional<QList<Fault>> parseFaults(const QStringList &texts, QString *error);
