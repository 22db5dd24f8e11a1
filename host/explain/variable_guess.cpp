// SPDX-License-Identifier: MIT
#include "variable_guess.h"

#include "filled.h"

#include <QtCore/QRegularExpression>

namespace {

/// Another notation, in small letters behind "UNIT/", and the usual one. "#" leads a number that counts from 1.
const char *const rules[][2] = {
    {"^([0134]x):?(?=\\d)", "\\1#"},
    {"^(holding[ _-]?registers?|holding|hr(?!32)|4x(?=#)|%mw)[: ]?(?=#?\\d)", "hr:"},
    {"^(input[ _-]?registers?|ir(?!32)|3x(?=#)|%iw)[: ]?(?=#?\\d)", "ir:"},
    {"^(discrete[ _-]?inputs?|inputs?|1x(?=#))[: ]?(?=#?\\d)", "input:"},
    {"^(coils?|0x(?=#))[: ]?(?=#?\\d)", "coil:"},
    {"^(hr.*:)4(?=\\d{5}\\b)", "\\1#"},
    {"^(ir.*:)3(?=\\d{5}\\b)", "\\1#"},
    {"^(input:)1(?=\\d{5}\\b)", "\\1#"},
    {":(uint16|word|unsigned)\\b", ":u16"},
    {":(int16|int|signed)\\b", ":s16"},
    {":(uint32|dword|udint)\\b", ":u32"},
    {":(int32|dint)\\b", ":s32"},
    {":(real|float32|f32)\\b", ":float"},
    {":(string|ascii)\\b", ":text"},
    {"^([hi]r)(:\\d+)(\\*2)?(?=:(float|[us]32))", "\\132\\2"},
    {"^(.r32.*:[us])16", "\\132"},
    {"^([hi]r)(32)?(?=:\\d+\\.\\d)", "\\1bit"},
    {"^(.rbit:\\d+)(?=[*:]|$)", "\\1.0"},
    {"^((coil|input|.rbit):[^:]*):.*", "\\1"},
    {"^(.r32:[^:]+)(?=:[abcd]{4}$)", "\\1:float"},
};

/// Replaces the first part of the text that fits by what `result` makes of its first two numbers.
template <typename Result> void compute(QString *text, const char *form, int base, Result result)
{
    const auto found = QRegularExpression(asText(form)).match(*text);
    if (found.hasMatch())
        text->replace(found.capturedStart(), found.capturedLength(),
                      result(found.captured(1).toInt(nullptr, base), found.captured(2).toInt()));
}

} // namespace

QString fromTableNumber(const QString &text, int base)
{
    static const QRegularExpression form(
        QStringLiteral("^(\\d+/)?([0134])(\\d{4,5})(\\.\\d+)?((\\*\\d+)?(:(float|[us]32)?.*)?)$"));
    const auto found = form.match(text);
    if (!found.hasMatch())
        return QString();
    const int table = found.captured(2).toInt();
    const char *const areas[] = {"coil", "input", "", "ir", "hr"};
    const bool isBit = !found.captured(4).isEmpty();
    const bool isPair = !found.captured(8).isEmpty();
    const char *const suffix = table < 3 ? "" : isBit ? "bit" : isPair ? "32" : "";
    return filled("%1%2%3:%4%5%6", found.captured(1), areas[table], suffix,
                  found.captured(3).toInt() - 1 + base, found.captured(4), found.captured(5));
}

QString likelyVariable(const QString &text, int base)
{
    const int slash = text.indexOf(QLatin1Char('/'));
    QString likely = text.mid(slash + 1).toLower();
    compute(&likely, "0x([0-9a-f]+)", 16, [](int number, int) { return QString::number(number); });
    for (const auto &[other, usual] : rules)
        likely.replace(QRegularExpression(asText(other)), asText(usual));
    compute(&likely, "#(\\d+)", 10, [base](int number, int) { return QString::number(number - 1 + base); });
    compute(&likely, "(\\d+)-(\\d+)", 10,
            [](int first, int last) { return filled("%1*%2", first, last - first + 1); });
    const int order = likely.indexOf(QRegularExpression(QStringLiteral(":[abcd]+$")));
    return text.left(slash + 1) + likely.left(order) + (order < 0 ? QString() : likely.mid(order).toUpper());
}
