// SPDX-License-Identifier: MIT
/// \file
/// The records that host and driver exchange. Order and width of their fields never change: on the 32-bit
/// panel every field is one 32-bit word (a text or byte array is one pointer wide). The layouts are checked at
/// compile time. The records have no lock of their own; each call says what it needs.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// One access, read or write, to one run of bits or registers at one station.
struct RW_VAR
{
    int hostId = 0; ///< host's item; 1..11 in the request in flight shifts every error status by that amount
    int hostItem = 0;   ///< host's second identifier; with hostId it names the group that a call-back reports
    int rwFlag = 0;     ///< 0 read, 1 write; anything else makes the judging of the reply fail
    int remoteMode = 0; ///< CommSettings::remoteMode when the record was made
    int linkId = 0;     ///< CommSettings::linkId when the record was made; picks local or remote judging
    int status = 0;     ///< a status code, meaningful in the record that DataCom returns
    QString tagText;    ///< the host's own text, carried through untouched
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

/// The host's communication settings: nineteen words, owned by the host and kept alive by it as long
/// as the driver may run. The driver reads and writes the words that have a name of their own; the
/// hostWord fields are never touched. No word is locked: the host changes them between two calls of
/// the communication cycle.
struct CommSettings
{
    int hostWord0 = 0;       ///< the host's own
    int hostWord1 = 0;       ///< the host's own
    int hostWord2 = 0;       ///< the host's own
    int hostWord3 = 0;       ///< the host's own
    int writeBlockSize = 0;  ///< most registers in one request; below 1: no limit
    int hostWord5 = 0;       ///< the host's own
    int defaultStation = 0;  ///< the station of every access while multiStation is 0
    int retryLimit = 0;      ///< failed exchanges of one request that are tried again
    int failCount = 0;       ///< written by the driver: failed exchanges since the last give-up
    int multiStation = 0;    ///< 0: all stations share one register image; else values are kept per station
    int cfgWord10 = 0;       ///< set to 0 by SetComInfo, never read
    int repliesExpected = 0; ///< written by the driver: replies that the current request needs
    int repliesReceived = 0; ///< written by the driver: good replies that it has had
    int cfgWord13 = 0;       ///< set to 0 by SetComInfo, never read
    int remoteMode = 0;      ///< nonzero: the driver's own compact frames go out instead of Modbus requests
    int linkId = 0;          ///< replies to records of another link are judged as remote ones
    int writeMode = 0;       ///< 2: host writes go to the station; else to the image only
    int cycleDone =
        0; ///< written by the driver: 1 once the whole poll list was read, 0 after a failure or rebuild
    int hostChannel = 0; ///< handed back as the first argument of the write-done call-back
};

/// The host's description of one variable to poll. The host* fields are not read by the driver.
struct VAR_ITEM
{
    quint8 hostByte0 = 0; ///< the host's own
    quint8 area = 0;      ///< an AreaCode (codes.h)
    quint8 station = 0;   ///< used while CommSettings::multiStation is nonzero
    quint8 hostByte3 = 0; ///< the host's own
    int hostWord = 0;     ///< the host's own
    QString addressText;  ///< see StringAddressToInt
    QString tagText;      ///< carried through untouched
    int count = 0;        ///< bits in areas 0 to 3, registers in areas 4 to 7
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
