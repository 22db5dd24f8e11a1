// SPDX-License-Identifier: MIT
/// \file
/// The outcome of an exchange in words. Pure; any thread.

#pragma once

#include "../link/exchange.h"

#include "../../driver/api/records.h"

/// How it ended: "exception 2: illegal data address", "no reply".
QString exchangeText(const Exchange &exchange);

/// Why an exchange was no success: as above, with advice where there is some, and with the driver's status when the
/// driver refused a reply that this host accepts. Addresses in it count from `base`.
QString failureText(const RW_VAR &access, const Exchange &exchange, int status, int base);
