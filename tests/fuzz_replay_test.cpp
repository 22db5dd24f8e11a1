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
protected:
    const QString m_folder = QString::fromLatin1(SEEDS "/") + QString::fromLatin1(GetParam().first);

    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
        return file.readAll();
    }

    static void run(const QByteArray &input)
    {
        GetParam().second(reinterpret_cast<const quint8 *>(input.constData()), static_cast<std::size_t>(input.size()));
    }
};

TEST_P(FuzzReplay, NoNamedInputBreaksAPromise)
{
    const QFileInfoList files = QDir(m_folder).entryInfoList(QDir::Files);
    ASSERT_FALSE(files.isEmpty());
    for (const QFileInfo &file : files) {
        std::printf("%s\n", qPrintable(file.fileName()));
        run(contentOf(file.filePath()));
    }
}

TEST_P(FuzzReplay, NoPackedInputBreaksAPromise)
{
    const QList<QByteArray> lines = contentOf(m_folder + QString::fromLatin1(".txt")).trimmed().split('\n');
    for (int i = 0; i < lines.size(); ++i) {
        std::printf("line %d\n", i + 1);
        const QByteArray input = QByteArray::fromHex(lines.at(i));
        ASSERT_EQ(lines.at(i), input.toHex()) << "not hexadecimal";
        ASSERT_FALSE(input.isEmpty());
        run(input);
    }
}

INSTANTIATE_TEST_SUITE_P(Driver, FuzzReplay,
                         testing::Values(Target("HostCalls", fuzzHostCalls), Target("PollLists", fuzzPollLists)),
                         [](const auto &target) { return target.param.first; });
#if QT_VERSION >= 0x050000
INSTANTIATE_TEST_SUITE_P(Host, FuzzReplay, testing::Values(Target("Framing", fuzzFraming), Target("Values", fuzzValues)),
                         [](const auto &target) { return target.param.first; });
#endif

} // namespace
