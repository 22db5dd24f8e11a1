// SPDX-License-Identifier: MIT
// The application object that the simulated station's thread needs, for a whole test program.

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>

namespace {

class Application : public testing::Environment
{
    int m_argc = 1;
    char m_name[5] = "test";
    char *m_argv[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argc, m_argv};
};
const auto *const application = testing::AddGlobalTestEnvironment(new Application);

} // namespace
