#include "records/RecordJson.h"

QJsonValue RecordJson::valueOf(const QStringList& value)
{
    return QJsonArray::fromStringList(value);
}

QJsonValue RecordJson::valueOf(const QDateTime& value)
{
    return value.toString(Qt::ISODate);
}

void RecordJson::take(const QJsonValue& json, QStringList* value)
{
    value->clear();
    const QJsonArray array = json.toArray();
    for (const auto element : array)
        value->append(element.toString());
}

void RecordJson::take(const QJsonValue& json, QDateTime* value)
{
    *value = QDateTime::fromString(json.toString(), Qt::ISODate);
}
