// SPDX-License-Identifier: MIT
/// \file
/// What a frame means, in words.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

enum class FrameKind { Request, Reply, Remote };

/// One line: unit, function, address, quantity, values or exception; or what is wrong with the frame.
QString frameSummary(const QByteArray &frame, FrameKind kind);

/// Field by field, one line each, byte offsets first.
QStringList frameFields(const QByteArray &frame, FrameKind kind);
