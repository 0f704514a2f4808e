#pragma once

#include "records/Fields.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

#include <type_traits>

/// Records as JSON objects, by their lists of fields.
namespace RecordJson {

template <typename Record>
constexpr bool isRecord = !std::is_same_v<decltype(Records::kFields<Record>), const std::nullptr_t>;

/// Every field of a record.
template <typename Record>
QJsonObject write(const Record& record);

/// Sets every field that the object has in the right type. What is missing or mistyped keeps its
/// value, but for lists, which become empty, and words; unknown keys are passed over, and no range
/// is checked.
template <typename Record>
void read(const QJsonObject& json, Record* record);

/// The record of an object, with the defaults of its type.
template <typename Record>
Record read(const QJsonObject& json);

/// The records of a list, each as an object.
template <typename Record>
QJsonArray writeList(const QList<Record>& records);

/// The records of an array; of anything else, none. An element that is no object still gives one,
/// as `element` has it.
template <typename Record>
QList<Record> readList(const QJsonValue& json, const Record& element = {});

// ---- Values --------------------------------------------------------------------------------

template <typename Value>

requires std::is_constructible_v<QJsonValue, Value> QJsonValue valueOf(const Value& value)
{
    return value;
}

inline QJsonValue valueOf(quint32 value)
{
    return qint64{value};
}

inline QJsonValue valueOf(float value)
{
    return double{value};
}

QJsonValue valueOf(const QStringList& value);

/// A moment, to the second.
QJsonValue valueOf(const QDateTime& value);

template <typename Record>

requires isRecord<Record> QJsonValue valueOf(const Record& record)
{
    return write(record);
}

inline void take(const QJsonValue& json, bool* value)
{
    *value = json.toBool(*value);
}

inline void take(const QJsonValue& json, qint32* value)
{
    *value = json.toInt(*value);
}

inline void take(const QJsonValue& json, quint32* value)
{
    *value = static_cast<quint32>(json.toInteger(*value));
}

inline void take(const QJsonValue& json, double* value)
{
    *value = json.toDouble(*value);
}

inline void take(const QJsonValue& json, float* value)
{
    *value = static_cast<float>(json.toDouble(double{*value}));
}

inline void take(const QJsonValue& json, QString* value)
{
    *value = json.toString(*value);
}

/// An element that is no text is an empty one.
void take(const QJsonValue& json, QStringList* value);

/// Invalid for anything that is no moment.
void take(const QJsonValue& json, QDateTime* value);

/// Whatever it is.
inline void take(const QJsonValue& json, QJsonValue* value)
{
    *value = json;
}

template <typename Record>
requires isRecord<Record>

void take(const QJsonValue& json, Record* record)
{
    read(json.toObject(), record);
}

// ---- Fields --------------------------------------------------------------------------------

template <typename Record, typename Value>
QJsonValue valueIn(const Record& record, const Records::Field<Record, Value>& field)
{
    return valueOf(record.*field.member);
}

template <typename Record, typename Value>
QJsonValue valueIn(const Record& record, const Records::WordField<Record, Value>& field)
{
    return field.toWord(record.*field.member);
}

template <typename Record, typename Element>
QJsonValue valueIn(const Record& record, const Records::ListField<Record, Element>& field)
{
    return writeList(record.*field.member);
}

template <typename Record, typename Value>
void takeInto(Record* record, const QJsonValue& json, const Records::Field<Record, Value>& field)
{
    take(json, &(record->*field.member));
}

template <typename Record, typename Value>
void takeInto(Record* record, const QJsonValue& json,
              const Records::WordField<Record, Value>& field)
{
    record->*field.member = field.fromWord(json.toString());
}

template <typename Record, typename Element>
void takeInto(Record* record, const QJsonValue& json,
              const Records::ListField<Record, Element>& field)
{
    record->*field.member = readList(json, field.fresh());
}

// ---- Records -------------------------------------------------------------------------------

template <typename Record>
QJsonObject write(const Record& record)
{
    static_assert(isRecord<Record>);
    QJsonObject json;
    const auto put = [&](const auto&... field) {
        (json.insert(field.key, valueIn(record, field)), ...);
    };
    std::apply(put, Records::kFields<Record>.fields);
    return json;
}

template <typename Record>
void read(const QJsonObject& json, Record* record)
{
    static_assert(isRecord<Record>);
    const auto get = [&](const auto&... field) { (takeInto(record, json[field.key], field), ...); };
    std::apply(get, Records::kFields<Record>.fields);
}

template <typename Record>
Record read(const QJsonObject& json)
{
    Record record;
    read(json, &record);
    return record;
}

template <typename Record>
QJsonArray writeList(const QList<Record>& records)
{
    QJsonArray array;
    for (const Record& record : records)
        array.append(write(record));
    return array;
}

template <typename Record>
QList<Record> readList(const QJsonValue& json, const Record& element)
{
    const QJsonArray array = json.toArray();
    QList<Record> records;
    records.reserve(array.size());
    for (const auto value : array) {
        Record record = element;
        read(value.toObject(), &record);
        records.append(std::move(record));
    }
    return records;
}

} // namespace RecordJson
