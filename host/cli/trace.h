// SPDX-License-Identifier: MIT
/// \file
/// Every frame with time, direction and bytes in the form that Wireshark's text import reads, its meaning
/// ahead as a comment:
///
///     # unit 1: ...
///     I 2020-02-29 12:00:01.123456
///     000000 00 00 00 00 00 06 01 03 00 00 00 03
///
/// I goes to the station, O comes from it. Never waits for its reader: text that is not read is left out and counted.
/// Used on the communication thread while that runs, else on the main thread.

#pragma once

#include "../link/link_trace.h"

#include "../../station/line_output.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <memory>

class Trace : public LinkTrace
{
public:
    /// A trace that writes nothing.
    Trace() = default;
    ~Trace(); ///< reports text that the file refused to noteLostOutput
    Trace(const Trace &) = delete;
    Trace &operator=(const Trace &) = delete;

    /// To the end of a file, or to stderr for an empty path. First the time and `peer`, the station in words, as a
    /// comment. False, with one line in *error, when that cannot be opened.
    bool open(const QString &path, const QString &peer, bool remote, QString *error);

    void request(const QByteArray &frame) const override;
    void reply(const QByteArray &frame, const QString &remark) const override;
    /// The import passes over it.
    void comment(const QString &text) const override;

private:
    void frame(char direction, const QByteArray &bytes, const QString &meaning) const;

    std::unique_ptr<LineOutput> m_output; ///< null: no trace
    bool m_remote = false;
};
