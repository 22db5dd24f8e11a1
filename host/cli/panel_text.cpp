// SPDX-License-Identifier: MIT
#include "panel_text.h"

#include "../explain/value_text.h"

QString placeText(const Variable &variable)
{
    QString text = QString::number(variable.unit) + QLatin1Char('/') + areaName(variable.area) +
                   QLatin1Char(':') + variable.addressText();
    if (variable.count != 1)
        text += QLatin1Char('*') + QString::number(variable.count);
    return text;
}

QString measuredText(const Variable &variable, const QByteArray &bytes)
{
    const QString text = valueText(variable, bytes);
    return variable.measure.isEmpty() ? text : text + QLatin1Char(' ') + variable.measure;
}

QString linkText(const PanelSnapshot &now)
{
    const bool isUp = now.link == LinkState::Up || now.link == LinkState::Waiting;
    if (isUp)
        return now.numbers == TransactionNumbers::NotEchoed
                   ? QStringLiteral("up, the station echoes no transaction numbers")
                   : QStringLiteral("up");
    const QString state =
        now.link == LinkState::Connecting ? QStringLiteral("connecting") : QStringLiteral("backing off");
    return now.linkCause == LinkCause::None
               ? state
               : QStringLiteral("%1 after %2").arg(state, linkCauseText(now.linkCause));
}
