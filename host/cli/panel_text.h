// SPDX-License-Identifier: MIT
/// \file
/// Words that the table and the records share. Pure.

#pragma once

#include "../explain/panel_state.h"

/// The values, and their unit of measure.
QString measuredText(const Variable &variable, const QByteArray &bytes);

/// The state of the link: "up", "backing off after connection refused", and whether the station lacks numbers.
QString linkText(const PanelSnapshot &now);
