// SPDX-License-Identifier: MIT
/// \file
/// Lists of variables in files. The plain form has VARIABLE[=VALUE] and optionally a name on each line; "#" starts a
/// comment. The other form is CSV, with commas or semicolons, under a line with the columns' names. "base 1" on the
/// first line lets addresses count from 1. Any thread.

#pragma once

#include "variable.h"

#include <QtCore/QList>

struct ListedVariable
{
    Variable variable;
    QString value; ///< as typed; null when there is none
    QString place; ///< "FILE:LINE: ", for errors; empty when it was not in a file
};

/// Reads VARIABLE or VARIABLE=VALUE; addresses count from `base`. Nothing, with one line in *error, when the
/// variable is wrong.
std::optional<ListedVariable> parseAssignment(const QString &text, int base, QString *error);

/// Reads a list whose addresses count from `base`, unless its first line says otherwise. Nothing, with one line
/// naming file and line in *error, when it cannot be read.
std::optional<QList<ListedVariable>> readVariableList(const QString &path, int base, QString *error);
