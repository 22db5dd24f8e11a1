// SPDX-License-Identifier: MIT
#include "panel_text.h"

#include "../explain/filled.h"
#include "../explain/value_text.h"

QString measuredText(const Variable &variable, const QByteArray &bytes)
{
    const QString text = valueText(variable, bytes);
    return variable.measure.isEmpty() ? text : text + QLatin1Char(' ') + variable.measure;
}

QString linkText(const PanelSnapshot &now)
{
    if (now.link == LinkState::Up)
        return asText(now.numbers == TransactionNumbers::NotEchoed
                          ? "up, the station echoes no transaction numbers"
                          : "up");
    const QString state = asText(now.link == LinkState::Connecting ? "connecting" : "backing off");
    return now.linkCause == LinkCause::None ? state
                                            : filled("%1 after %2", state, linkCauseText(now.linkCause));
}
