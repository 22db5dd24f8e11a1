// SPDX-License-Identifier: MIT
/// \file
/// Cuts the byte stream into replies. The length field of its header ends a reply, not the expected length: so an
/// exception reply, which is shorter, is handed over at once and not after the time-out. Pure: bytes go in, cut at any
/// point, and whole replies come out.

#pragma once

#include "reply_check.h"

class ReplyFraming
{
public:
    enum Result {
        Incomplete, ///< more bytes are needed
        Whole,      ///< a reply was taken off the stream
        BadHeader,  ///< the stream is out of step; clear() it and reconnect
    };

    void append(const QByteArray &bytes) { append(bytes.constData(), bytes.size()); }
    void append(const char *bytes, int size);

    /// Takes the next reply off the stream. For an invalid header *fault says why.
    Result take(QByteArray *reply, ReplyFault *fault);
    /// The same for frames without a length field: a reply is `length` bytes.
    Result takeLength(int length, QByteArray *reply);

    bool isEmpty() const { return m_first == m_bytes.size(); }
    /// Bytes that were received and not taken yet.
    QByteArray rest() const { return m_bytes.mid(m_first); }
    void clear();

private:
    QByteArray m_bytes;
    int m_first = 0; ///< of the bytes that are not taken yet
};
