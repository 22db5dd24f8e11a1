// SPDX-License-Identifier: MIT
/// \file
/// What a frame means, in words. Pure; any thread.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

enum class FrameKind { Request, Reply, Remote };

struct FrameText
{
    /// One line: unit, function, address, quantity, values or exception, as far as the frame holds them.
    QString meaning;
    QStringList fields; ///< one line each: byte offsets, bytes, name, meaning
    /// What a strict receiver would reject, one line each, most important first: lengths, counts, limits, checksum.
    QStringList faults;

    /// The meaning, followed by the first fault of a faulty frame.
    QString summary() const;
};

FrameText frameText(const QByteArray &frame, FrameKind kind);

/// The kinds with the fewest faults. More than one where the bytes do not tell: the reply to a single write repeats
/// the request.
QList<FrameKind> likelyKinds(const QByteArray &frame);
