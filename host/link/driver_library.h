// SPDX-License-Identifier: MIT
/// \file
/// The driver, loaded by path as a panel does it, with its functions found by symbol look-up. Never unloaded: texts
/// that the driver made may still be in use.

#pragma once

#include "../../driver/api/host_calls.h"

#include <QtCore/QString>

#include <optional>

/// The functions of the driver that this host uses. Plain pointers, valid until the process ends.
struct DriverLibrary
{
    decltype(&::SetComInfo) setComInfo = nullptr;
    decltype(&::RegistCallBackFuncIntf) registerCallBacks = nullptr;
    decltype(&::FlashLocalRegister) flashLocalRegister = nullptr;
    decltype(&::ReCreatReadVarList) recreateReadList = nullptr;
    decltype(&::AddListOnceReadVar) addOnceRead = nullptr;
    decltype(&::AddListWriteVar) addWrite = nullptr;
    decltype(&::EnCommStation) enableStation = nullptr;
    decltype(&::ComCommunication) nextRequest = nullptr;
    decltype(&::DataCom) handReply = nullptr;
    decltype(&::GetRegisterData) getRegisterData = nullptr;
    decltype(&::SetRegisterData) setRegisterData = nullptr;
};

/// Loads the driver with all its symbols resolved. An empty path is that of the environment's MODBUS_DRIVER, else
/// beside or in ../lib of the program, else the file name for the dynamic linker to find. Nothing, with one line in
/// *error that names the file and the symbol that is missing, when that fails.
std::optional<DriverLibrary> loadDriver(const QString &path, QString *error);
