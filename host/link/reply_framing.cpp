// SPDX-License-Identifier: MIT
#include "reply_framing.h"

#include "../../driver/base/modbus_wire.h"

using namespace modbus_driver::wire;

ReplyFraming::Result ReplyFraming::take(QByteArray *reply, ReplyFault *fault)
{
    if (m_bytes.size() < LengthAt) // the protocol field is not whole
        return Incomplete;
    if (wordAt(m_bytes, ProtocolAt) != 0) {
        *fault = ReplyFault::OtherProtocol;
        return BadHeader;
    }
    if (m_bytes.size() < LengthFieldEnd)
        return Incomplete;
    const int body = wordAt(m_bytes, LengthAt);
    if (body < ShortestLengthField || body > LongestLengthField) {
        *fault = ReplyFault::BadLength;
        return BadHeader;
    }
    return takeLength(LengthFieldEnd + body, reply);
}

ReplyFraming::Result ReplyFraming::takeLength(int length, QByteArray *reply)
{
    if (m_bytes.size() < length)
        return Incomplete;
    *reply = m_bytes.left(length);
    m_bytes.remove(0, length);
    return Whole;
}
