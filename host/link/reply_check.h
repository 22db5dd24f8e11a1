// SPDX-License-Identifier: MIT
/// \file
/// Whether a reply can be the answer to a request. The driver judges a reply by its length alone. So the host holds
/// back replies that have the right length but answer another request, such as a late reply. Pure: no socket, no state.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// Why received bytes are not handed to the driver.
enum class ReplyFault {
    None,
    BadLength,        ///< length field outside 2 to 254: the stream is out of step
    OtherProtocol,    ///< protocol identifier not 0
    OtherTransaction, ///< transaction identifier not the request's
    OtherUnit,
    OtherFunction,
    WrongByteCount, ///< the byte count disagrees with the reply's length or with what was asked
    WrongEcho,      ///< a write's reply names another address, value or quantity
    Ambiguous,      ///< without numbers: several different replies came, and any may be the answer
};

/// In words, such as "other unit".
QString replyFaultText(ReplyFault fault);

/// Judges a whole Modbus TCP reply, whose transaction number was judged before, against the request. An exception reply
/// is an answer.
ReplyFault checkReply(const QByteArray &request, const QByteArray &reply);

/// The exception code of a reply, or -1 when it is not an exception reply.
int exceptionCode(const QByteArray &reply);
