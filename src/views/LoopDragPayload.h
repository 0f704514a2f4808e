#pragma once

#include "music/LoopSection.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

class QMimeData;

/// The format under which a drag carries a LoopDragPayload.
inline constexpr const char* kLoopVariantMimeType = "application/x-velta-loop";

/// A loop on its way from the browser to the arranger.
struct LoopDragPayload {
    QString rhythmId;
    QString layerId;
    LoopSection section = LoopSection::Normal;
    int variantIndex = 1;

    /// Reads the data of kLoopVariantMimeType. Missing and mistyped keys take the values above.
    /// Nothing for an empty object and for what is none.
    static std::optional<LoopDragPayload> fromJson(const QByteArray& json);

    /// What fromJson() reads back, as compact UTF-8.
    QByteArray toJson() const;

    /// What a drag of this loop carries: toJson() under kLoopVariantMimeType and nothing else.
    std::unique_ptr<QMimeData> toMimeData() const;
};
