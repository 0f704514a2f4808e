#include "views/LoopDragPayload.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::Literals::StringLiterals;

std::optional<LoopDragPayload> LoopDragPayload::fromJson(const QByteArray& json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    if (object.isEmpty())
        return std::nullopt;
    return LoopDragPayload{.rhythmId = object["rhythmId"_L1].toString(),
                           .layerId = object["layerId"_L1].toString(),
                           .section = loopSectionFromString(object["section"_L1].toString()),
                           .variantIndex = object["variantIndex"_L1].toInt(1)};
}
