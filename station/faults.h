// SPDX-License-Identifier: MIT
/// \file
/// Faults that a station has on demand, and the text in which they are asked for:
///
///     FAULT[=VALUE][@SELECTOR=VALUE[,SELECTOR=VALUE...]]      such as  silence@unit=2,every=3
///
/// Parsed wherever the text comes from (a command line, a test); judged on the station's thread. A request
/// is carried out whatever befalls its reply; only `exception` replaces carrying it out.

#pragma once

#include "request_facts.h"

#include <QtCore/QList>
#include <QtCore/QStringList>

#include <limits>
#include <optional>

struct Fault
{
    enum Kind {
        Silence,     ///< no reply
        Delay,       ///< reply after value milliseconds; later requests of the connection wait behind it
        Cut,         ///< only the first value bytes of the reply
        Double,      ///< the reply twice, in one segment
        Glue,        ///< the reply held back until the connection's next one, both in one segment
        Close,       ///< the connection closed instead of a reply
        Reset,       ///< the same by a TCP reset
        Refuse,      ///< no listening and no connection for value seconds
        Unit,        ///< unit identifier value in the reply
        Length,      ///< length field value, or wrong by value when relative
        Protocol,    ///< protocol identifier value
        Transaction, ///< transaction identifier value
        Function,    ///< function code value
        Exception,   ///< exception value, also for units that are not there; a broadcast stays unanswered
    };

    /// Both ends belong to it.
    struct Range
    {
        int first = std::numeric_limits<int>::min();
        int last = std::numeric_limits<int>::max();
    };

    QString text; ///< as asked for
    Kind kind = Silence;
    int value = 0;
    bool relative = false;

    Range unit;
    Range function;
    Range address; ///< a request is selected when it touches any address of the range
    int every = 1; ///< strikes the K-th, 2K-th, 3K-th... selected request
    int nth = 0;   ///< strikes the K-th selected request only; 0: not limited so

    int selected = 0; ///< requests selected so far
};

/// Reads one fault. Nothing, with one line in *error, when the text is wrong in any part.
std::optional<Fault> parseFault(const QString &text, QString *error);
/// Reads several, likewise.
std::optional<QList<Fault>> parseFaults(const QStringList &texts, QString *error);

/// Counts the request if the fault selects it, and tells whether the fault strikes.
bool strikes(Fault &fault, const RequestFacts &request);

/// Whether the fault alters a Modbus TCP frame, and so means nothing in remote frames.
bool needsModbusFrames(const Fault &fault);
