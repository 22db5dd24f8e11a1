// SPDX-License-Identifier: MIT
#include "reply_framing.h"

#include "../../driver/base/modbus_wire.h"

using namespace modbus_driver::wire;

/// Taken bytes are removed here, once for many replies, so that a flood costs no quadratic time.
void ReplyFraming::append(const char *bytes, int size)
{
    m_bytes.remove(0, m_first);
    m_first = 0;
    m_bytes.reserve(m_bytes.size() + size); // and keep that memory
    m_bytes.append(bytes, size);
}

ReplyFraming::Result ReplyFraming::take(QByteArray *reply, ReplyFault *fault)
{
    const int size = m_bytes.size() - m_first;
    if (size < LengthAt) // the protocol field is not whole
        return Incomplete;
    if (wordAt(m_bytes, m_first + ProtocolAt) != 0) {
        *fault = ReplyFault::OtherProtocol;
        return BadHeader;
    }
    if (size < LengthFieldEnd)
        return Incomplete;
    const int body = wordAt(m_bytes, m_first + LengthAt);
    if (body < ShortestLengthField || body > LongestLengthField) {
        *fault = ReplyFault::BadLength;
        return BadHeader;
    }
    return takeLength(LengthFieldEnd + body, reply);
}

ReplyFraming::Result ReplyFraming::takeLength(int length, QByteArray *reply)
{
    if (m_bytes.size() - m_first < length)
        return Incomplete;
    *reply = QByteArray(m_bytes.constData() + m_first, length);
    m_first += length;
    return Whole;
}

void ReplyFraming::clear()
{
    m_bytes.clear();
    m_first = 0;
}
