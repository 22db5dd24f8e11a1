// SPDX-License-Identifier: MIT
// The measurements of time with Google Benchmark.

#pragma once

namespace bench {

/// Registers every work.
void registerTimes();

/// Registers how long a panel's thread waits for its read or write while another thread keeps the driver
/// busy.
void registerPanelWaits();

} // namespace bench
