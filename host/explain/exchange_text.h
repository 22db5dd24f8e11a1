// SPDX-License-Identifier: MIT
/// \file
/// The outcome of an exchange, and the exception codes, in words. Pure; any thread.

#pragma once

#include "../link/exchange.h"

/// How it ended: "exception 2: illegal data address", "no reply".
QString exchangeText(const Exchange &exchange);

/// The name of a Modbus exception, such as "illegal data address".
QString exceptionName(int code);
