// SPDX-License-Identifier: MIT
/// \file
/// The replies that arrive on the socket, sorted: the answer to the current request, and all that is thrown away and
/// counted (late replies, echoes of a broadcast). Memory is bounded whatever the peer sends. Used by Connection on the
/// communication thread.

#pragma once

#include "link_trace.h"
#include "reply_framing.h"
#include "tcp_socket.h"
#include "transaction_numbers.h"

#include "../../driver/api/records.h"

#include <QtCore/QList>

#include <utility>

class ReplyStream
{
public:
    enum Found {
        Nothing,    ///< no whole reply is there
        Answer,     ///< by its number the reply to the current request
        Unnumbered, ///< a reply that may answer any request: number 0, or a remote frame
        Foreign, ///< a reply with a number that was never given, or without one though the station echoes them
        BadHeader, ///< the stream is out of step
    };

    /// The references must outlive the stream. `remote`: frames have neither number nor length.
    ReplyStream(TcpSocket &socket, const LinkTrace &trace, bool remote);

    /// Nothing of an earlier connection counts.
    void clear();
    /// The bytes to send: the frame with a number of its own. Its reply becomes the one that is waited for.
    QByteArray expectReplyTo(const Protocol &request);

    /// Waits for more bytes: Silent without any, Flood when they are too many.
    LinkCause receive(const Deadline &deadline);
    /// Takes the next reply. Late replies are thrown away on the way.
    Found take(QByteArray *reply, ReplyFault *fault);
    /// Gives a reply the number 0, as the driver sent it.
    void clearNumber(QByteArray *reply) const;
    /// Throws a reply away and counts it as late.
    void discard(const QByteArray &reply);
    /// Throws away all whole replies that are there. BadHeader when the stream is out of step, Foreign or Unnumbered
    /// when a reply was among them that its number did not excuse, else Nothing.
    Found discardAll();

    TransactionNumbers &numbers() { return m_numbers; }

    /// The begin of a reply is there.
    bool isCut() const { return !m_framing.isEmpty(); }
    /// What is there and not taken, in hexadecimal.
    QString restText() const;
    /// Bytes since the current request was sent.
    int bytesReceived() const { return m_bytesReceived; }
    bool hasLate() const { return !m_lateUnits.isEmpty(); }
    /// The units of the replies that were thrown away since the last call; -1 where the frame names none.
    QList<int> takeLateUnits() { return std::exchange(m_lateUnits, {}); }

private:
    bool isBroadcastEcho(const QByteArray &reply);

    TcpSocket &m_socket;
    const LinkTrace &m_trace;
    const bool m_remote;
    ReplyFraming m_framing;
    TransactionNumbers m_numbers;
    int m_expectedLength = 0;    ///< of a remote reply
    int m_broadcastFunction = 0; ///< of a broadcast that one echo is due for; 0: none
    int m_bytesReceived = 0;
    QList<int> m_lateUnits;
};
