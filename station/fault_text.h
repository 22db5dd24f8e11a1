// SPDX-License-Identifier: MIT
/// \file
/// Reads faults from the text of a command line or a test:
///
///     FAULT[=VALUE][@SELECTOR=VALUE[,SELECTOR=VALUE...]]      such as  silence@unit=2,every=3
///
/// Pure functions: any thread.

#pragma once

#include "fault.h"

#include <QtCore/QList>
#include <QtCore/QStringList>

#include <optional>

/// Reads one fault. Returns nothing when any part of the text is wrong; *error (if not null) then has one
/// line of text.
std::optional<Fault> parseFault(const QString &text, QString *error);
/// Reads several, in the same way.
std::optional<QList<Fault>> parseFaults(const QStringList &texts, QString *error);
