// SPDX-License-Identifier: MIT
#include "trace.h"

#include "../explain/frame_text.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace {

/// Local time of day, to the microsecond.
QByteArray timeOfDay()
{
    using namespace std::chrono;
    const auto sinceEpoch = system_clock::now().time_since_epoch();
    const qint64 microseconds = duration_cast<std::chrono::microseconds>(sinceEpoch).count();
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(microseconds / 1000);
    return time.toString(QStringLiteral("HH:mm:ss.")).toLatin1() +
           QByteArray::number(microseconds % 1000000).rightJustified(6, '0');
}

} // namespace

bool Trace::open(const QString &path, bool remote, QString *error)
{
    m_remote = remote;
    m_file.reset(path.isEmpty() ? stderr : std::fopen(QFile::encodeName(path).constData(), "w"));
    if (!m_file) {
        *error = QStringLiteral("cannot write the trace %1: %2")
                     .arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    comment(
        QStringLiteral("text2pcap -D -t '%H:%M:%S.%f' -4 127.0.0.1,127.0.0.1 -T 40000,502 TRACE FILE.pcap"));
    return true;
}

void Trace::request(const QByteArray &bytes) const
{
    if (!m_file)
        return;
    comment(frameSummary(bytes, m_remote ? FrameKind::Remote : FrameKind::Request));
    frame('I', bytes);
}

void Trace::reply(const QByteArray &bytes, const QString &remark) const
{
    if (!m_file)
        return;
    // The replies of remote peers do not say what they hold.
    const QString meaning = m_remote ? QStringLiteral("reply, %1 bytes").arg(bytes.size())
                                     : frameSummary(bytes, FrameKind::Reply);
    comment(remark.isEmpty() ? meaning : QStringLiteral("%1 (%2)").arg(meaning, remark));
    frame('O', bytes);
}

void Trace::comment(const QString &text) const
{
    if (!m_file)
        return;
    std::fprintf(m_file.get(), "# %s\n", qPrintable(text));
    std::fflush(m_file.get());
}

void Trace::frame(char direction, const QByteArray &bytes) const
{
    std::fprintf(m_file.get(), "%c %s\n000000 %s\n\n", direction, timeOfDay().constData(),
                 bytes.toHex(' ').constData());
    std::fflush(m_file.get());
}
