// SPDX-License-Identifier: MIT
#include "transaction.h"

#include "mbap.h"

#include "../driver/arithmetic.h"
#include "../driver/driver_object.h"

namespace transaction {

namespace {
const Reply none = {0, 0, 0};
const Protocol blank = Protocol(); // copied, which takes less than making one
} // namespace

Reply readReply(int station, int dataBytes)
{
    if (station == 0)
        return none;
    return {arithmetic::wrapped(qint64(dataBytes) + mbap::ReadReplyHeader), mbap::ReadReplyHeader, dataBytes};
}

Reply writeEcho(int station)
{
    if (station == 0)
        return none;
    return {mbap::WriteEchoLength, 0, 0};
}

void append(QByteArray frame, const Reply &reply, const RW_VAR &var)
{
    PLC_driver.pendingList.append(blank);
    Protocol &built = PLC_driver.pendingList.last();
    built.frameLength = frame.size();
    built.frame.swap(frame);
    built.replyLength = reply.length;
    built.replyHeaderLength = reply.headerLength;
    built.replyDataLength = reply.dataLength;
    built.var = var;
}

void expectReplies(int count)
{
    PLC_driver.comInfo->repliesExpected = count;
    PLC_driver.comInfo->repliesReceived = 0;
}

} // namespace transaction
