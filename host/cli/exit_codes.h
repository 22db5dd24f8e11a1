// SPDX-License-Identifier: MIT
/// \file
/// The exit codes of modbus-panel.

#pragma once

enum ExitCode {
    ExitDone = 0,           ///< everything asked for was done
    ExitFailed = 1,         ///< a station refused or did not answer; a frame to explain is faulty
    ExitUsage = 2,          ///< the command line, a variable, a value or a file is wrong
    ExitNoLink = 3,         ///< no connection, or the driver cannot be loaded
    ExitOutcomeUnknown = 4, ///< a write may or may not have been carried out
};
