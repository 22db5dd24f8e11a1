// SPDX-License-Identifier: MIT
// Every seed of the fuzzers and everything they ever found, without the fuzzing engine. A target ends the
// process when a promise is broken, so each folder is a test by itself.
#include "targets.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

namespace {

typedef std::pair<const char *, void (*)(const quint8 *, std::size_t)> Target;

class FuzzReplay : public testing::TestWithParam<Target>
{
};

TEST_P(FuzzReplay, NoSeedBreaksAPromise)
{
    const QDir seeds(QString::fromLatin1("%1/%2").arg(QString::fromLatin1(SEEDS), QString::fromLatin1(GetParam().first)));
    const QFileInfoList files = seeds.entryInfoList(QDir::Files);
    ASSERT_FALSE(files.isEmpty());
    for (const QFileInfo &entry : files) {
        QFile file(entry.filePath());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray input = file.readAll();
        std::printf("%s\n", qPrintable(entry.fileName()));
        GetParam().second(reinterpret_cast<const quint8 *>(input.constData()), static_cast<std::size_t>(input.size()));
    }
}

INSTANTIATE_TEST_SUITE_P(All, FuzzReplay,
                         testing::Values(Target("HostCalls", fuzzHostCalls), Target("PollLists", fuzzPollLists),
                                         Target("Framing", fuzzFraming), Target("Values", fuzzValues)),
                         [](const auto &target) { return target.param.first; });

} // namespace
