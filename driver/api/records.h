// SPDX-License-Identifier: MIT
/// \file
/// The records that host and driver exchange. Order and width of their fields never change: on the 32-bit
/// panel every field is one 32-bit word (a text or byte array is one pointer wide). The layouts are checked
/// at compile time. The records have no lock of their own; each call says what it needs.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// \addtogroup Records
/// @{

/// One access, read or write, to one run of bits or registers at one station.
struct RW_VAR
{
    int hostId = 0;       ///< who asked; 1 to 11 in the request in flight is added to every error status
    int hostItem = 0;     ///< who asked, second number; with hostId it names the group that writeDone reports
    int rwFlag = 0;       ///< an AccessKind: 0 read, 1 write; with any other value the exchange fails
    int remoteMode = 0;   ///< CommSettings::remoteMode when the record was made
    int linkId = 0;       ///< CommSettings::linkId when the record was made; picks local or remote judging
    int status = 0;       ///< a StatusCode, meaningful in the record that DataCom returns
    QString tagText;      ///< the host's own text, copied and never read
    QString addressText;  ///< the address as text, converted together with area
    int area = 0;         ///< an AreaCode (codes.h)
    int startAddress = 0; ///< first bit or register, counted from 0
    int station = 0;      ///< unit identifier, its low byte goes on the wire; 0 is broadcast: no reply comes
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
    int replyLength = 0; ///< bytes of the whole reply; 0: none will come (broadcast); -1: any length will do
    int replyHeaderLength = 0;   ///< reply bytes ahead of the data: 9 for a read, 0 for a write's echo
    int replyDataLength = 0;     ///< data bytes in the reply
    RW_VAR var;                  ///< the access that the request serves
    int reserved[3] = {0, 0, 0}; ///< never read or written by the driver
};

/// The host's communication settings: nineteen words. The host owns the record and keeps it alive as long as
/// the driver may run. The driver never touches the hostWord fields.
///
/// No word is locked. GetRegisterData, SetRegisterData, AddListOnceReadVar and ReCreatReadVarList read some of
/// them on the caller's thread. The host changes words on the communication thread, between DataCom and
/// ComCommunication, and only while no other thread is inside one of those calls.
///
/// failCount counts over all requests. A host that wants retryLimit retries for each request sets failCount to
/// 0 after each success. cycleDone turns 1 when one good local reply more than the poll list has entries came
/// without a failure between them, writes and one-shot reads included, and when nothing is left to send.
struct CommSettings
{
    int hostWord0 = 0;       ///< the host's own
    int hostWord1 = 0;       ///< the host's own
    int hostWord2 = 0;       ///< the host's own
    int hostWord3 = 0;       ///< the host's own
    int writeBlockSize = 0;  ///< most registers in one request; below 1: nothing is cut, and hardly joined
    int hostWord5 = 0;       ///< the host's own
    int defaultStation = 0;  ///< the station of every access while multiStation is 0
    int retryLimit = 0;      ///< a failed request is sent again while failCount is not above it
    int failCount = 0;       ///< written by the driver: failures since the last give-up; success keeps it
    int multiStation = 0;    ///< 0: all stations share one register image; else values are kept per station
    int cfgWord10 = 0;       ///< set to 0 by SetComInfo, never read
    int repliesExpected = 0; ///< written by the driver: replies that the current request needs
    int repliesReceived = 0; ///< written by the driver: good replies that it has had
    int cfgWord13 = 0;       ///< set to 0 by SetComInfo, never read
    int remoteMode = 0;      ///< nonzero: the driver's own compact frames go out instead of Modbus requests
    int linkId = 0;          ///< a reply to a request with another linkId is judged as remote
    int writeMode = 0;       ///< 2: host writes go to the station; else to the image only
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
    QString tagText;      ///< the host's own text, copied and never read
    int count = 0;        ///< bits in areas 0 to 3, registers in areas 4 to 7; 1 or more
};

/// One value of one station, kept while CommSettings::multiStation is nonzero.
struct EXTENDVAR
{
    int station = 0;  ///< the station whose value this is
    int area = 0;     ///< 0, 1, 4 or 5
    int address = 0;  ///< bit areas: the group's first bit, a multiple of 8; else the register
    QByteArray value; ///< one byte of eight bits, bit 0 first, or two bytes of a register, low byte first;
                      ///< readers take a shorter value for zeros and look at no further bytes
};

/// @}
