// SPDX-License-Identifier: MIT
#include "transaction_numbers.h"

namespace {

enum { Numbers = 65535 };   // 1 to 65535
enum { Remembered = 4096 }; // requests whose late replies are recognised

} // namespace

quint16 TransactionNumbers::next()
{
    m_last = static_cast<quint16>(m_last % Numbers + 1);
    m_given = qMin<int>(m_given + 1, Remembered);
    m_isWaiting = true;
    return m_last;
}

TransactionNumbers::Kind TransactionNumbers::take(quint16 number)
{
    if (number == 0)
        return Zero;
    const int age = (m_last - number + Numbers) % Numbers; // in requests
    if (age >= m_given)
        return Foreign;
    if (number != m_last || !m_isWaiting)
        return Old;
    m_isWaiting = false;
    m_habit = Echoed;
    return Current;
}

void TransactionNumbers::noteZeroAccepted()
{
    if (m_habit == Unknown)
        m_habit = NotEchoed;
    m_isWaiting = false;
}
