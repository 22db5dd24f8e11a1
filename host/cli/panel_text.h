// SPDX-License-Identifier: MIT
/// \file
/// Words that the table and the records share. Pure.

#pragma once

#include "../explain/panel_state.h"

/// The area and address as the variable names them, with its unit: "2/hr:100*4".
QString placeText(const Variable &variable);

/// The values, and their unit of measure.
QString measuredText(const Variable &variable, const QByteArray &bytes);

/// The state of the link: "up", "backing off after connection refused", and whether the station lacks numbers.
QString linkText(const PanelSnapshot &now);
