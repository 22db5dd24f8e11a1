// SPDX-License-Identifier: MIT
// Every seed of the fuzzers and everything they ever found, without the fuzzing engine: the named inputs of
// seeds/TARGET, and seeds/TARGET.txt, one input a line in hexadecimal. A target ends the process when a promise is
// broken, so each target is a test by itself, and the input's name is printed before it runs.
#include "targets.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

namespace {

typedef std::pair<const char *, void (*)(const quint8 *, std::size_t)> Target;

class FuzzReplay : public testing::TestWithParam<Target>
{
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

TEST_P(FuzzReplay, NoInputBreaksAPromise)
{
    const QString folder = QString::fromLatin1(SEEDS "/") + QString::fromLatin1(GetParam().first);
    std::vector<std::pair<QByteArray, QByteArray>> inputs;
    for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files))
        inputs.push_back({file.fileName().toLatin1(), contentOf(file.filePath())});
    ASSERT_FALSE(inputs.empty());
    for (const QByteArray &line : contentOf(folder + QString::fromLatin1(".txt")).trimmed().split('\n')) {
        inputs.push_back({line, QByteArray::fromHex(line)});
        EXPECT_EQ(inputs.back().second.toHex(), line) << "not hexadecimal";
    }
    for (const auto &[name, input] : inputs) {
        std::printf("%s\n", name.constData());
        GetParam().second(reinterpret_cast<const quint8 *>(input.constData()), static_cast<std::size_t>(input.size()));
    }
}

#if QT_VERSION >= 0x050000
#define HOST_TARGETS , Target("Framing", fuzzFraming), Target("Values", fuzzValues), Target("Connection", fuzzConnection)
#else
#define HOST_TARGETS
#endif
INSTANTIATE_TEST_SUITE_P(Every, FuzzReplay,
                         testing::Values(Target("HostCalls", fuzzHostCalls), Target("PollLists", fuzzPollLists) HOST_TARGETS),
                         [](const auto &target) { return target.param.first; });

} // namespace
