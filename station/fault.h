// SPDX-License-Identifier: MIT
/// \file
/// One fault that a station has on demand: which requests it selects, and what it does to their replies. Read
/// from text by fault_text.h, chosen for a request by fault_choice.h, applied to the reply by
/// fault_application.h. A request is carried out whatever happens to its reply; only `exception` replaces
/// carrying it out. Plain data, without a lock.

#pragma once

#include <QtCore/QString>

#include <limits>

struct Fault
{
    enum Kind {
        Silence,     ///< no reply
        Delay,       ///< reply after value milliseconds; later requests of the connection wait behind it
        Late,        ///< reply after value milliseconds; later requests are answered in the meantime
        Cut,         ///< only the first value bytes of the reply
        Double,      ///< the reply twice, in one segment
        Repeat,      ///< the reply again after value milliseconds
        Flood,       ///< the reply again and again for value seconds, as fast as the master takes it
        Glue,        ///< the reply held back until the connection's next one, both in one segment
        Close,       ///< the connection closed instead of a reply
        Reset,       ///< the same by a TCP reset
        Refuse,      ///< no listening and no connection for value seconds
        Behind,      ///< the reply to the station's request before this one, in its place
        Unit,        ///< unit identifier value in the reply
        Length,      ///< length field value, or wrong by value when relative
        Protocol,    ///< protocol identifier value
        Transaction, ///< transaction identifier value
        Function,    ///< function code value
        Exception,   ///< exception value, also for units that are not there; a broadcast stays unanswered
        Greet,       ///< at connect, without a request, the reply to a read of value registers or bits
    };

    /// Both ends belong to it.
    struct Range
    {
        int first = std::numeric_limits<int>::min();
        int last = std::numeric_limits<int>::max();

        /// The first number, or `otherwise` when no range was given.
        int firstOr(int otherwise) const
        {
            return first == std::numeric_limits<int>::min() ? otherwise : first;
        }
    };

    QString text; ///< as asked for
    Kind kind = Silence;
    int value = 0;
    int lastValue =
        0; ///< above value: each application takes the next of value to lastValue, then value again
    bool relative = false;

    Range unit;
    Range function;
    Range address; ///< a request is selected when it touches any address of the range
    int every = 1; ///< applies to the K-th, 2K-th, 3K-th... selected request
    int nth = 0;   ///< applies to the K-th selected request only; 0: not limited so

    int selected = 0; ///< requests selected so far; of `greet`: connections
    int applied = 0;  ///< how often it was applied
};

/// Whether the fault changes a Modbus TCP frame, and so has no meaning in remote frames.
inline bool needsModbusFrames(const Fault &fault)
{
    return fault.kind >= Fault::Unit;
}
