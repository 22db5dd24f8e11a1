// SPDX-License-Identifier: MIT
// What Google Benchmark times.

#pragma once

namespace bench {

/// Registers every work, for times alone.
void registerTimes();

/// Registers how long a panel's thread waits for its read or write while another thread keeps the driver
/// busy.
void registerPanelWaits();

} // namespace bench
