// SPDX-License-Identifier: MIT
/// \file
/// Variables in other notations: the numbers of manuals, the words of other tools, mistakes that are easily made.
/// What is returned need not be a variable. Pure; any thread.

#pragma once

#include <QtCore/QString>

/// Numbers whose first digit is the table, such as 40001, 400001*2 or 40007:float, as AREA:ADDRESS with
/// addresses from `base` on; empty when the text is none.
QString fromTableNumber(const QString &text, int base);

/// What is likely meant; empty when nothing is.
QString likelyVariable(const QString &text, int base);
