// SPDX-License-Identifier: MIT
#include "records.h"

#include "panel_text.h"

#include "../explain/value_text.h"

#include <QtCore/QDateTime>
#include <QtCore/QStringBuilder>

#include <cstring>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace {

using Json = rapidjson::Writer<rapidjson::StringBuffer>;

/// Local time with the zone's offset and milliseconds.
QString timeText()
{
    const QDateTime now = QDateTime::currentDateTime();
    return now.toOffsetFromUtc(now.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

const char *const linkCodes[] = {"connecting", "up", "backing_off"};    // by LinkState::State
const char *const stateCodes[] = {"fresh", "old", "never", "failed"};   // by ValueState::State
const char *const numbersTexts[] = {"unknown", "echoed", "not echoed"}; // by TransactionNumbers::Habit

double ageSeconds(const ValueState &value, const PanelSnapshot &now)
{
    return double(now.nowMs() - value.readAtMs()) / 1000;
}

void putText(Json *json, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    json->String(utf8.constData(), static_cast<unsigned>(utf8.size()));
}

/// Names and values in turn.
template <typename Value, typename... More>
void put(Json *json, const char *name, const Value &value, const More &...more)
{
    json->Key(name);
    if constexpr (std::is_same_v<Value, QString>)
        putText(json, value);
    else if constexpr (std::is_same_v<Value, double>)
        json->Double(value);
    else if constexpr (std::is_same_v<Value, bool>)
        json->Bool(value);
    else if constexpr (std::is_same_v<Value, int>)
        json->Int(value);
    else
        json->String(value);
    if constexpr (sizeof...(more) > 0)
        put(json, more...);
}

/// Numbers as they are shown; hexadecimal ones, nan and inf as text. In one piece: there may be thousands.
QByteArray jsonArray(const Variable &variable, const QByteArray &bytes)
{
    QByteArray values = valuesText(variable, bytes, ',');
    const auto isText = [&](const QByteArray &value) {
        return variable.type == ValueType::Hexadecimal || std::strchr(value.constData(), 'n');
    };
    if (!values.isEmpty() && isText(values)) {
        QByteArrayList words = values.split(',');
        for (QByteArray &word : words) {
            if (isText(word))
                word = '"' + word + '"';
        }
        values = words.join(',');
    }
    return values.prepend('[').append(']');
}

void putValues(Json *json, const ValueState &value)
{
    const Variable &variable = value.variable();
    json->Key("values");
    if (variable.type == ValueType::Text && value.readAtMs() >= 0) {
        json->StartArray();
        putText(json, valueText(variable, value.value()));
        json->EndArray();
        return;
    }
    const QByteArray array = value.readAtMs() < 0 ? "[]" : jsonArray(variable, value.value());
    json->RawValue(array.constData(), static_cast<std::size_t>(array.size()), rapidjson::kArrayType);
}

void putVariable(Json *json, const ValueState &value, const PanelSnapshot &now, qint64 freshForMs)
{
    const Variable &variable = value.variable();
    json->StartObject();
    put(json, "name", variable.name, "unit", variable.unit, "address", value.place(), "type",
        typeName(variable));
    putValues(json, value);
    put(json, "measure", variable.measure);
    json->Key("age");
    value.readAtMs() < 0 ? json->Null() : json->Double(ageSeconds(value, now));
    put(json, "state", value.stateText(now.nowMs(), freshForMs));
    put(json, "state_code", stateCodes[value.state(now.nowMs(), freshForMs)], "changed", value.hasChanged());
    json->EndObject();
}

template <typename Map, typename Name>
void putCounts(Json *json, const char *name, const Map &counts, Name nameOf)
{
    json->Key(name);
    json->StartObject();
    for (const auto &[key, count] : counts)
        put(json, nameOf(key).toUtf8().constData(), count);
    json->EndObject();
}

void putUnit(Json *json, int number, const UnitStatistics &unit, qint64 elapsedMicroseconds)
{
    json->StartObject();
    put(json, "unit", number, "off", unit.isOff, "requests", unit.requests, "good", unit.good);
    putCounts(json, "exceptions", unit.exceptions, [](int code) { return QString::number(code); });
    put(json, "timeouts", unit.timeOuts);
    putCounts(json, "held_back", unit.heldBack, replyFaultText);
    put(json, "late", unit.late, "closed", unit.closed, "reconnects", unit.reconnects);
    put(json, "median_ms", double(unit.roundTrips.percentile(50)) / 1000);
    put(json, "p99_ms", double(unit.roundTrips.percentile(99)) / 1000);
    put(json, "lost_percent", unit.lostPercent(elapsedMicroseconds));
    json->EndObject();
}

QByteArray jsonRecord(const PanelSnapshot &now, const RecordOptions &options)
{
    rapidjson::StringBuffer buffer;
    Json json(buffer);
    json.StartObject();
    put(&json, "time", timeText(), "station", options.station, "pass", now.passes);
    put(&json, "seconds", double(now.nowMs()) / 1000, "link", linkText(now));
    put(&json, "link_code", linkCodes[now.link], "numbers", numbersTexts[now.numbers]);
    json.Key("variables");
    json.StartArray();
    for (const ValueState &value : now.values)
        putVariable(&json, value, now, options.freshForMs);
    json.EndArray();
    json.Key("units");
    json.StartArray();
    for (const auto &[number, unit] : now.units)
        putUnit(&json, number, unit, now.elapsedMicroseconds);
    json.EndArray();
    json.EndObject();
    buffer.Put('\n');
    return QByteArray(buffer.GetString(), static_cast<int>(buffer.GetSize()));
}

/// As RFC 4180 quotes it.
QByteArray quoted(QByteArray field)
{
    const bool isPlain = !std::strpbrk(field.constData(), ",\"\r\n");
    return isPlain ? field : '"' + field.replace('"', "\"\"") + '"';
}

QByteArray csvRows(const PanelSnapshot &now, const RecordOptions &options)
{
    const QByteArray start = timeText().toLatin1() + ',' + quoted(options.station.toUtf8()) + ',' +
                             QByteArray::number(now.passes) + ',' + quoted(linkText(now).toUtf8()) + ',' +
                             linkCodes[now.link] + ',';
    QByteArray rows;
    for (const ValueState &value : now.values) {
        const Variable &variable = value.variable();
        const bool isKnown = value.readAtMs() >= 0;
        const QString state = value.stateText(now.nowMs(), options.freshForMs);
        const QByteArray row = start % quoted(variable.name.toUtf8()) % ',' % value.place().toUtf8() % ',' %
                               (isKnown ? quoted(valuesText(variable, value.value(), ' ')) : QByteArray()) %
                               ',' % quoted(variable.measure.toUtf8()) % ',' % quoted(state.toUtf8()) % ',' %
                               stateCodes[value.state(now.nowMs(), options.freshForMs)] % ',' %
                               (isKnown ? QByteArray::number(ageSeconds(value, now), 'f', 3) : QByteArray()) %
                               '\n';
        rows += row;
    }
    return rows;
}

} // namespace

void addRecordOptions(CommandLine *line)
{
    line->addOption("json", "One JSON object a line for each pass, or for the one read.");
    line->addOption("csv", "CSV: titles, then a line for each variable and pass.");
}

RecordForm recordFormOption(CommandLine *line)
{
    if (line->isSet("json") && line->isSet("csv"))
        line->complain("--json and --csv are two forms; take one");
    return line->isSet("json") ? RecordForm::Json : line->isSet("csv") ? RecordForm::Csv : RecordForm::None;
}

QByteArray recordHeading(RecordForm form)
{
    return form == RecordForm::Csv
               ? "time,station,pass,link,link_code,name,address,value,measure,state,state_code,age_s\n"
               : "";
}

QByteArray record(const PanelSnapshot &now, const RecordOptions &options)
{
    return options.form == RecordForm::Json ? jsonRecord(now, options) : csvRows(now, options);
}
