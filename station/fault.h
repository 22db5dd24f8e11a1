// SPDX-License-Identifier: MIT
/// \file
/// One fault that a user asks a station to make: which requests it selects, and how it changes their replies.
/// fault_text.h reads it from text, fault_choice.h chooses the faults for a request, and fault_application.h
/// applies them to the reply. The station executes the request in any case; only `exception` is sent instead
/// of executing it. Plain data without a lock.

#pragma once

#include <QtCore/QString>

#include <limits>

struct Fault
{
    enum Kind {
        Silence,     ///< no reply
        Delay,       ///< reply after value milliseconds; later requests of the connection wait for it
        Late,        ///< reply after value milliseconds; later requests are answered in the meantime
        Cut,         ///< only the first value bytes of the reply
        Double,      ///< the reply twice, sent together
        Repeat,      ///< the reply, and the same reply again value milliseconds later
        Flood,       ///< the reply again and again for value seconds, as fast as the master reads it
        Glue,        ///< the reply together with the next reply of the connection
        Close,       ///< no reply; the station closes the connection
        Reset,       ///< no reply; the station resets the connection (TCP RST)
        Refuse,      ///< no reply; all connections end, and the station does not listen for value seconds
        Behind,      ///< the reply to the station's previous request instead of the right one
        Unit,        ///< value as unit identifier of the reply
        Length,      ///< value as length field; when relative, value is added to the right length
        Protocol,    ///< value as protocol identifier
        Transaction, ///< value as transaction identifier
        Function,    ///< value as function code
        Exception,   ///< exception code value, also for units that do not exist; no reply to a broadcast
        Greet,       ///< at connect, without a request: the reply to a read of value registers or bits
    };

    /// The numbers from first to last, both included. By default every number.
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

    QString text; ///< the text that it was read from
    Kind kind = Silence;
    int value = 0;
    /// Above value: each application uses the next number from value to lastValue, then value again.
    int lastValue = 0;
    bool relative = false;

    Range unit;
    Range function;
    Range address; ///< a request is selected when it has at least one address of the range
    int every = 1; ///< K: applies to the selected requests number K, 2K, 3K...
    int nth = 0;   ///< K: applies only to the selected request number K; 0: no such limit

    int selected = 0; ///< number of requests selected so far; for `greet`, of connections
    int applied = 0;  ///< number of times that it was applied
};

/// True when the fault changes fields of a Modbus TCP frame. Such a fault has no meaning for remote frames.
inline bool needsModbusFrames(const Fault &fault)
{
    return fault.kind >= Fault::Unit;
}
