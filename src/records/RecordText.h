#pragma once

#include "records/Fields.h"
#include "records/JsonText.h"

/// Records as JSON text, by their lists of fields: the bytes that RecordJson::write() gives through
/// QJsonDocument indented, for records so long that the tree of values costs more than they do.
namespace RecordText {

/// Every field of a record, as an object.
template <typename Record>
void write(const Record& record, JsonText* json);

// ---- Fields --------------------------------------------------------------------------------

template <typename Value>
void writeValue(const Value& value, JsonText* json)
{
    if constexpr (requires { json->value(value); })
        json->value(value);
    else
        write(value, json);
}

template <typename Record, typename Value>
void writeField(const Record& record, const Records::Field<Record, Value>& field, JsonText* json)
{
    writeValue(record.*field.member, json);
}

template <typename Record, typename Value>
void writeField(const Record& record, const Records::WordField<Record, Value>& field,
                JsonText* json)
{
    json->value(field.toWord(record.*field.member));
}

template <typename Record, typename Element>
void writeField(const Record& record, const Records::ListField<Record, Element>& field,
                JsonText* json)
{
    json->beginArray();
    for (const Element& element : record.*field.member)
        write(element, json);
    json->endArray();
}

// ---- Records -------------------------------------------------------------------------------

template <typename Record>
void write(const Record& record, JsonText* json)
{
    const auto writeMember = [&](const auto& field) {
        json->key(field.key);
        writeField(record, field, json);
    };
    json->beginObject();
    std::apply([&](const auto&... field) { (writeMember(field), ...); },
               Records::kFields<Record>.fields);
    json->endObject();
}

} // namespace RecordText
