// SPDX-License-Identifier: MIT
/// \file
/// Numbers the transactions with one station, and tells by its number whether a reply answers the current request or an
/// earlier one. The driver builds every request with transaction 0; the connection writes the number into its own copy.
/// Pure; used on the communication thread.

#pragma once

#include <QtCore/QtGlobal>

class TransactionNumbers
{
public:
    /// What the station does with the numbers, as far as its replies have shown.
    enum Habit { Unknown, Echoed, NotEchoed };

    enum Kind {
        Current, ///< the reply to the request that waits
        Old,     ///< the reply to an earlier request, or the current one's reply a second time
        Zero,    ///< 0, which is never given to a request: a station that does not echo, or an unasked frame
        Foreign, ///< any other number
    };

    /// `seed` picks the first number, so that two runs do not use the same ones.
    explicit TransactionNumbers(unsigned seed) : m_last(static_cast<quint16>(seed)) {}

    /// The number of the next request; never 0.
    quint16 next();
    /// The kind of a reply's number. A current number proves that the station echoes, and ends the wait.
    Kind take(quint16 number);
    /// The current request has been answered or given up: its number is old from now on.
    void endWait() { m_isWaiting = false; }
    /// A reply with number 0 was accepted. Once a number was echoed this changes nothing.
    void noteZeroAccepted();

    Habit habit() const { return m_habit; }
    bool areEchoed() const { return m_habit == Echoed; }

private:
    quint16 m_last;
    int m_given = 0; ///< numbers given so far, at most as many as are remembered
    bool m_isWaiting = false;
    Habit m_habit = Unknown;
};
