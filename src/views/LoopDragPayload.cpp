#include "views/LoopDragPayload.h"

#include "records/RecordJson.h"

#include <QJsonDocument>
#include <QMimeData>

using namespace Qt::Literals::StringLiterals;

namespace Records {

template <>
constexpr auto kFields<LoopDragPayload> = FieldList{
    Field{"layerId"_L1, &LoopDragPayload::layerId},
    Field{"rhythmId"_L1, &LoopDragPayload::rhythmId},
    WordField{"section"_L1, &LoopDragPayload::section, loopSectionToString, loopSectionFromString},
    Field{"variantIndex"_L1, &LoopDragPayload::variantIndex},
};

} // namespace Records

std::optional<LoopDragPayload> LoopDragPayload::fromJson(const QByteArray& json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    if (object.isEmpty())
        return std::nullopt;
    return RecordJson::read<LoopDragPayload>(object);
}

QByteArray LoopDragPayload::toJson() const
{
    return QJsonDocument(RecordJson::write(*this)).toJson(QJsonDocument::Compact);
}

std::unique_ptr<QMimeData> LoopDragPayload::toMimeData() const
{
    auto data = std::make_unique<QMimeData>();
    data->setData(QString::fromLatin1(kLoopVariantMimeType), toJson());
    return data;
}
