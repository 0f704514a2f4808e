#include "views/LoopDragPayload.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>

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

QByteArray LoopDragPayload::toJson() const
{
    const QJsonObject object{{u"rhythmId"_s, rhythmId},
                             {u"layerId"_s, layerId},
                             {u"section"_s, loopSectionToString(section)},
                             {u"variantIndex"_s, variantIndex}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::unique_ptr<QMimeData> LoopDragPayload::toMimeData() const
{
    auto data = std::make_unique<QMimeData>();
    data->setData(QString::fromLatin1(kLoopVariantMimeType), toJson());
    return data;
}
