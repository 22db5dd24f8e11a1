// SPDX-License-Identifier: MIT
/// \file
/// The numbers that host and driver exchange, with names: areas, kinds of access, status codes, outcomes,
/// limits. The records and calls take and return plain ints. Constants only: any thread.

#pragma once

namespace modbus_driver {

/// \addtogroup Records
/// @{

/// The kind of a variable: RW_VAR::area and VAR_ITEM::area. Addresses count from 0 and are sent unchanged.
enum AreaCode {
    AreaCoils = 0,
    AreaDiscreteInputs = 1,
    AreaInputRegisterBit = 2,   ///< one bit, address register * 16 + bit
    AreaHoldingRegisterBit = 3, ///< one bit, address register * 16 + bit
    AreaInputRegisters = 4,
    AreaHoldingRegisters = 5,
    AreaInputPairs = 6,   ///< 32-bit values, high word in the first register
    AreaHoldingPairs = 7, ///< 32-bit values, high word in the first register
};

/// True for coils and discrete inputs. Every other area is in registers.
inline bool isBitArea(int area)
{
    return area == AreaCoils || area == AreaDiscreteInputs;
}

/// True for single bits of input registers and of holding registers.
inline bool isBitOfRegister(int area)
{
    return area == AreaInputRegisterBit || area == AreaHoldingRegisterBit;
}

enum { BitsOfRegister = 16 };

/// The area that a request for `area` reads. Bits and pairs of registers are read as registers: 2 and 6 give
/// 4, 3 and 7 give 5. Any other value gives itself.
inline int requestArea(int area)
{
    switch (area) {
    case AreaInputRegisterBit:
    case AreaInputPairs:
        return AreaInputRegisters;
    case AreaHoldingRegisterBit:
    case AreaHoldingPairs:
        return AreaHoldingRegisters;
    default:
        return area;
    }
}

/// RW_VAR::rwFlag. A request with any other value fails when its reply is judged.
enum AccessKind { AccessRead = 0, AccessWrite = 1 };

/// RW_VAR::subIndex of the read half of a bit-in-register write.
enum { SubIndexReadHalf = -1 };

/// RW_VAR::hostItem of every entry of the poll list; their hostId is 0.
enum { HostItemOfPoll = -1 };

/// Unit identifier 0: the request goes to every station and none replies.
enum { StationBroadcast = 0 };

/// CommSettings::writeMode. Any other value than 2 changes the image only.
enum { WriteModeToStation = 2 };

/// The most entries of the write queue and of the one-shot read queue. Entries beyond it are dropped, except
/// with QueueAsIs.
enum { QueueLimit = 1024 };

/// The mode of AddListWriteVar and AddListOnceReadVar. Any value other than 1 means QueueMerged.
enum QueueMode {
    QueueMerged = 0, ///< reads are converted; merged with queued entries; QueueLimit applies
    QueueAsIs = 1,   ///< appended as it is: no conversion, no merging, no limit
};

/// The last argument of the writeDone call-back.
enum WriteDoneOutcome {
    WriteDoneServed = 1,  ///< answered, and nothing else of the same hostId and hostItem is queued
    WriteDoneGivenUp = 2, ///< failed after its retries, and dropped
};

/// RW_VAR::status of the record that DataCom returns. Each error has a class of twelve codes, named here by
/// the first. The hostId of the request is added to it when that is 1 to 11.
enum StatusCode {
    StatusRetry = 0,               ///< the exchange failed; the request will be sent again
    StatusDone = 1,                ///< success
    StatusLocalBadKind = 11,       ///< 11 to 22: the request is neither a read nor a write
    StatusLocalNoReply = 41,       ///< 41 to 52: no bytes, though a reply was expected
    StatusLocalWrongLength = 71,   ///< 71 to 82: not the expected length, such as an exception reply
    StatusRemoteAccepted = 100,    ///< success, for a request of another link
    StatusRemoteBadKind = 111,     ///< 111 to 122: as StatusLocalBadKind, for another link
    StatusRemoteNoReply = 141,     ///< 141 to 152: as StatusLocalNoReply, for another link
    StatusRemoteWrongLength = 171, ///< 171 to 182: as StatusLocalWrongLength, for another link
    StatusUnknown = 200, ///< the code of an outcome that does not exist; the driver never reports it
};
enum { StatusCodesOfClass = 12 };

/// The result of judging a reply: the argument of GetDriverReturnValue.
enum ReplyOutcome {
    OutcomeDone = 0,              ///< accepted, and stored if it was a read
    OutcomeLocalBadKind = 1,      ///< the request is neither a read nor a write
    OutcomeLocalNoReply = 2,      ///< no bytes, though some were expected
    OutcomeLocalWrongLength = 3,  ///< not the expected length
    OutcomeRemoteAccepted = 4,    ///< accepted, for a request of another link
    OutcomeRemoteBadKind = 5,     ///< as OutcomeLocalBadKind
    OutcomeRemoteNoReply = 6,     ///< as OutcomeLocalNoReply
    OutcomeRemoteWrongLength = 7, ///< as OutcomeLocalWrongLength
};

/// @}

} // namespace modbus_driver
