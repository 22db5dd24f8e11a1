// SPDX-License-Identifier: MIT
/// \file
/// What a frame means, in words.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

enum class FrameKind { Request, Reply, Remote };

/// One line: unit, function, address, quantity, values or exception, as far as the frame holds them.
QString frameMeaning(const QByteArray &frame, FrameKind kind);

/// The same, followed by the first fault of a faulty frame.
QString frameSummary(const QByteArray &frame, FrameKind kind);

/// Field by field, one line each, byte offsets first.
QStringList frameFields(const QByteArray &frame, FrameKind kind);

/// What a strict receiver would reject, one line each: lengths, counts, limits, checksum. Empty for a
/// correct frame.
QStringList frameFaults(const QByteArray &frame, FrameKind kind);

/// The kinds with the fewest faults. More than one where the bytes do not tell: the reply to a single write repeats
/// the request.
QList<FrameKind> likelyKinds(const QByteArray &frame);
