// SPDX-License-Identifier: MIT
// The application object that the simulated station's thread needs, for a whole test program.

#include <QtCore/QCoreApplication>

namespace {

int count = 1;
char name[] = "test";
char *arguments[] = {name, nullptr};
const QCoreApplication application(count, arguments);

} // namespace
