// SPDX-License-Identifier: MIT
// The fuzz targets. Each takes one input and ends the process when a promise is broken. Run by libFuzzer
// (engine.cpp) and, over all seeds and past findings, by an ordinary test.

#pragma once

#include <QtCore/QtGlobal>

#include <cstddef>

void fuzzHostCalls(const quint8 *bytes, std::size_t size); ///< any calls, any replies, all modes
void fuzzPollLists(const quint8 *bytes,
                   std::size_t size);                       ///< poll lists and one-shot reads ask for every value
void fuzzFraming(const quint8 *bytes, std::size_t size);    ///< the host's framing of a stream
void fuzzConnection(const quint8 *bytes, std::size_t size); ///< the host's communication with a station that may do anything
void fuzzValues(const quint8 *bytes, std::size_t size);     ///< variables and values as people write them
