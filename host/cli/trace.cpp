// SPDX-License-Identifier: MIT
#include "trace.h"

#include "printable.h"
#include "standard_output.h"

#include "../explain/filled.h"
#include "../explain/frame_text.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>

#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Local time, to the microsecond.
QByteArray timeText()
{
    using namespace std::chrono;
    const auto sinceEpoch = system_clock::now().time_since_epoch();
    const qint64 microseconds = duration_cast<std::chrono::microseconds>(sinceEpoch).count();
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(microseconds / 1000);
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.")).toLatin1() +
           QByteArray::number(microseconds % 1000000).rightJustified(6, '0');
}

} // namespace

bool Trace::open(const QString &path, const QString &peer, bool remote, QString *error)
{
    m_remote = remote;
    const int file = path.isEmpty() ? dup(STDERR_FILENO)
                                    : ::open(QFile::encodeName(path).constData(),
                                             O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_CLOEXEC, 0666);
    if (file < 0) {
        *error = filled("cannot write the trace %1: %2", path, qt_error_string(errno));
        return false;
    }
    m_output = std::make_unique<LineOutput>(file);
    close(file);
    comment(filled("%1, %2", timeText().constData(), peer));
    comment(QStringLiteral("text2pcap -D -t '%Y-%m-%d %H:%M:%S.%f' -4 127.0.0.1,127.0.0.1 -T 40000,502 "
                           "TRACE FILE.pcap"));
    return true;
}

Trace::~Trace()
{
    if (m_output && m_output->hasFailed())
        noteLostOutput("the trace");
}

void Trace::request(const QByteArray &bytes) const
{
    if (!m_output)
        return;
    frame('I', bytes, frameText(bytes, m_remote ? FrameKind::Remote : FrameKind::Request).summary());
}

void Trace::reply(const QByteArray &bytes, const QString &remark) const
{
    if (!m_output)
        return;
    // The replies of remote peers do not say what they hold.
    const QString meaning =
        m_remote ? filled("reply, %1 bytes", bytes.size()) : frameText(bytes, FrameKind::Reply).summary();
    frame('O', bytes, remark.isEmpty() ? meaning : filled("%1 (%2)", meaning, remark));
}

void Trace::comment(const QString &text) const
{
    if (m_output)
        m_output->write("# " + printable(text).toUtf8());
}

void Trace::frame(char direction, const QByteArray &bytes, const QString &meaning) const
{
    comment(meaning);
    m_output->write(direction + (' ' + timeText()) + "\n000000 " + bytes.toHex(' ') + '\n');
}
