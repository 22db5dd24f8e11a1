// SPDX-License-Identifier: MIT
/// \file
/// The records that host and driver exchange. The order and width of their fields never change. On the 32-bit
/// panel a number is one 32-bit word (in VAR_ITEM four of them are bytes), and a text or byte array is one
/// pointer. The layouts are checked at compile time. The records have no lock of their own; each call says
/// which lock it needs.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// \addtogroup Records
/// @{

/// One access, read or write, to one run of bits or registers at one station.
struct RW_VAR
{
    int hostId = 0;       ///< the host's first number for its caller; 1 to 11 is added to every error status
    int hostItem = 0;     ///< the host's second number; with hostId it names the group that writeDone reports
    int rwFlag = 0;       ///< an AccessKind: 0 read, 1 write; with any other value the exchange fails
    int remoteMode = 0;   ///< CommSettings::remoteMode when the record was made
    int linkId = 0;       ///< CommSettings::linkId when the record was made; selects local or remote judging
    int status = 0;       ///< a StatusCode, meaningful in the record that DataCom returns
    QString tagText;      ///< the host's own text, copied and not used
    QString addressText;  ///< the address as text, converted together with area
    int area = 0;         ///< an AreaCode (codes.h)
    int startAddress = 0; ///< first bit or register, counted from 0
    int station = 0;      ///< unit identifier, its low byte is sent; 0 is broadcast: no reply comes
    int dataLength = 0;   ///< bytes of eight bits in bit reads, bits in bit writes, else registers
    int subIndex = 0;     ///< -1 on the read half of a bit-in-register write
    int aux = 0;          ///< spare word of the host; copied, never interpreted
    QByteArray data;      ///< value bytes, least significant first
};

/// One request that has been built and waits until its reply has been handled.
struct Protocol
{
    QByteArray frame;    ///< the bytes to send
    int frameLength = 0; ///< number of bytes to send
    int replyLength = 0; ///< bytes of the whole reply; 0: no reply comes (broadcast); -1: any length is right
    int replyHeaderLength = 0;   ///< reply bytes before the data: 9 for a read, 0 for the echo of a write
    int replyDataLength = 0;     ///< data bytes in the reply
    RW_VAR var;                  ///< the access for which the request was built
    int reserved[3] = {0, 0, 0}; ///< never read or written by the driver
};

/// The host's communication settings: nineteen words. The host owns the record and keeps it alive as long as
/// the driver is used. The driver never reads or writes the hostWord fields.
///
/// No lock protects the words. GetRegisterData, SetRegisterData, WriteDataToLocal, AddListOnceReadVar and
/// ReCreatReadVarList read some of them on the caller's thread. So the host changes words on the
/// communication thread, between DataCom and ComCommunication, and only while no other thread is inside one
/// of these calls.
///
/// failCount counts the failures of all requests together. A host that wants retryLimit retries for each
/// request sets failCount to 0 after each success. cycleDone becomes 1 when nothing is left to send. It also
/// becomes 1 after a number of good local replies without a failure: one more than the poll list has entries.
/// Replies to writes and one-shot reads count too.
struct CommSettings
{
    int hostWord0 = 0;       ///< the host's own
    int hostWord1 = 0;       ///< the host's own
    int hostWord2 = 0;       ///< the host's own
    int hostWord3 = 0;       ///< the host's own
    int writeBlockSize = 0;  ///< most registers in one request; below 1: no limit, see ReCreatReadVarList
    int hostWord5 = 0;       ///< the host's own
    int defaultStation = 0;  ///< the station of every access while multiStation is 0
    int retryLimit = 0;      ///< a failed request is sent again until failCount is above this number
    int failCount = 0;       ///< written by the driver: failures since it last gave up; a success keeps it
    int multiStation = 0;    ///< 0: all stations share one register image; else values are kept per station
    int cfgWord10 = 0;       ///< set to 0 by SetComInfo, never read
    int repliesExpected = 0; ///< written by the driver: replies that the current request needs
    int repliesReceived = 0; ///< written by the driver: good replies to the current request
    int cfgWord13 = 0;       ///< set to 0 by SetComInfo, never read
    int remoteMode = 0;      ///< nonzero: the driver sends its own compact frames instead of Modbus requests
    int linkId = 0;          ///< a reply to a request with another linkId is judged as remote
    int writeMode = 0;       ///< 2: host writes are sent to the station; else they change the image only
    int cycleDone = 0;       ///< written by the driver: 1 after a pass over the poll list, 0 after a failure
    int hostChannel = 0;     ///< the first argument of the writeDone call-back
};

/// The host's description of one variable to poll. The host* fields are not read by the driver.
struct VAR_ITEM
{
    quint8 hostByte0 = 0; ///< the host's own
    quint8 area = 0;      ///< an AreaCode (codes.h)
    quint8 station = 0;   ///< used while CommSettings::multiStation is nonzero
    quint8 hostByte3 = 0; ///< the host's own
    int hostWord = 0;     ///< the host's own
    QString addressText;  ///< see PLCAddressChangeIntef
    QString tagText;      ///< the host's own text, copied and not used
    int count = 0;        ///< bits in areas 0 to 3, registers in areas 4 to 7; 1 or more
};

/// One value of one station, kept while CommSettings::multiStation is nonzero.
struct EXTENDVAR
{
    int station = 0;  ///< unit identifier
    int area = 0;     ///< 0, 1, 4 or 5
    int address = 0;  ///< bit areas: the first of eight bits, a multiple of 8; else the register
    QByteArray value; ///< one byte of eight bits, lowest bit first, or two bytes of a register, low byte
                      ///< first; a shorter value is read as 0, further bytes are ignored
};

/// @}
