// SPDX-License-Identifier: MIT
/// \file
/// The commands of modbus-panel. Each takes the words after its name, parses its own options, prints to stdout,
/// prints an error in one line on stderr, and returns an ExitCode. Called once, on the main thread.

#pragma once

#include <QtCore/QStringList>

int pollCommand(const QStringList &arguments);
int readCommand(const QStringList &arguments);
int writeCommand(const QStringList &arguments);
int scanCommand(const QStringList &arguments);
int planCommand(const QStringList &arguments);
int decodeCommand(const QStringList &arguments);
int statusCommand(const QStringList &arguments);
