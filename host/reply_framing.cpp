// SPDX-License-Identifier: MIT
#include "reply_framing.h"

#include <QtCore/QtEndian>

namespace {

enum { ProtocolAt = 2, LengthAt = 4, LengthEnd = 6 };
enum { ShortestBody = 2, LongestBody = 254 }; // unit and function code; the largest PDU and its unit

} // namespace

ReplyFraming::Result ReplyFraming::take(QByteArray *reply, ReplyFault *fault)
{
    if (m_bytes.size() < LengthAt)
        return Incomplete;
    if (qFromBigEndian<quint16>(m_bytes.constData() + ProtocolAt) != 0) {
        *fault = ReplyFault::OtherProtocol;
        return BadHeader;
    }
    if (m_bytes.size() < LengthEnd)
        return Incomplete;
    const int body = qFromBigEndian<quint16>(m_bytes.constData() + LengthAt);
    if (body < ShortestBody || body > LongestBody) {
        *fault = ReplyFault::BadLength;
        return BadHeader;
    }
    return takeLength(LengthEnd + body, reply);
}

ReplyFraming::Result ReplyFraming::takeLength(int length, QByteArray *reply)
{
    if (m_bytes.size() < length)
        return Incomplete;
    *reply = m_bytes.left(length);
    m_bytes.remove(0, length);
    return Whole;
}
