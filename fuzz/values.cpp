// SPDX-License-Identifier: MIT
#include "script.h"
#include "targets.h"

#include "../host/explain/value_text.h"

#include <QtCore/QList>

namespace {

void requireOneLine(const QString &error)
{
    require(!error.isEmpty(), "what is refused is refused with a reason");
}

void requireInside(const Variable &variable)
{
    const int unit = variable.area == 2 || variable.area == 3 ? 16 : 1;
    require(variable.unit >= 0 && variable.unit <= 255, "a unit is 0 to 255");
    require(variable.area >= 0 && variable.area <= 7, "an area is 0 to 7");
    require(variable.count >= 1 && variable.address >= 0, "a variable names at least one address");
    require((qint64(variable.address) + variable.driverCount() - 1) / unit <= 65535, "a variable ends in its table");
}

/// Its canonical text gives the same variable.
void requireSameAgain(const Variable &variable)
{
    const QString order = orderName(variable.order, variable.width());
    const QString text = QString::fromLatin1("%1/%2:%3*%4:%5")
                             .arg(QString::number(variable.unit), areaName(variable.area), variable.addressText(),
                                  QString::number(variable.count), typeName(variable)) +
                         (order.isEmpty() ? QString() : QLatin1Char(':') + order);
    QString error;
    const std::optional<Variable> again = parseVariable(text, &error);
    require(again && again->unit == variable.unit && again->area == variable.area && again->address == variable.address &&
                again->count == variable.count && again->order == variable.order && typeName(*again) == typeName(variable),
            "a variable written out is the same variable");
}

/// What is shown can be typed and is shown the same; the bytes are too, but for a nan's.
void requireReadBack(const Variable &variable, const QByteArray &bytes)
{
    const QString text = valueText(variable, bytes);
    QString error;
    const std::optional<QByteArray> again = parseValues(variable, text, &error);
    require(again.has_value(), "values that are shown can be typed");
    require(valueText(variable, *again) == text, "values that are shown and typed are shown the same");
    require(*again == bytes || text.contains(QLatin1String("nan")), "values that are shown and typed are the same");
}

} // namespace

/// A line for the variable, a line for its values, and the bytes of some values. What they end in tells the scale.
void fuzzValues(const quint8 *bytes, std::size_t size)
{
    Script script(bytes, size);
    const QList<QByteArray> lines = script.rest().split('\n');
    QString error;
    std::optional<Variable> variable = parseVariable(QString::fromUtf8(lines.at(0)), &error);
    if (!variable)
        return requireOneLine(error);
    requireInside(*variable);
    requireSameAgain(*variable);

    const double scales[] = {1, 0.1, -0.25, 1000};
    const int width = variable->width();
    if (width > 1 && variable->type != ValueType::Hexadecimal && variable->type != ValueType::Text)
        variable->scale = scales[bytes[size - 1] % 4];
    const std::optional<QByteArray> typed = parseValues(*variable, QString::fromUtf8(lines.value(1)), &error);
    if (!typed)
        requireOneLine(error);
    if (typed) {
        require(typed->size() == variable->count * width, "as many bytes as the variable has values");
        requireReadBack(*variable, *typed);
    }
    QByteArray held = lines.value(2);
    for (int i = 0; width == 1 && i < held.size(); ++i)
        held[i] = held.at(i) & 1;
    if (held.size() == variable->count * width)
        requireReadBack(*variable, held);
}
