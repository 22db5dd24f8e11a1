// SPDX-License-Identifier: MIT
/// \file
/// Cuts the byte stream into replies. A whole Modbus TCP reply is what its header says, not what was
/// expected: an exception reply, shorter than the expected one, is then handed over at once instead of after
/// the time-out. Pure: bytes go in, cut at any point, and whole replies come out.

#pragma once

#include "reply_check.h"

class ReplyFraming
{
public:
    enum Result {
        Incomplete, ///< more bytes are needed
        Whole,      ///< a reply was taken off the stream
        BadHeader,  ///< the stream is out of step; only clear() helps
    };

    void append(const QByteArray &bytes) { m_bytes.append(bytes); }

    /// Takes the next reply off the stream. Of a bad header *fault says what is wrong.
    Result take(QByteArray *reply, ReplyFault *fault);
    /// The same where the frames do not tell their length: a reply is `length` bytes.
    Result takeLength(int length, QByteArray *reply);

    /// What has come in and is not taken yet.
    const QByteArray &rest() const { return m_bytes; }
    void clear() { m_bytes.clear(); }

private:
    QByteArray m_bytes;
};
