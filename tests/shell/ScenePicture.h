#pragma once

#include "views/arranger/BlockItem.h"
#include "views/pianoroll/NoteItem.h"

#include <QGraphicsScene>
#include <QSet>
#include <QStringList>

/// What the scenes of the editors show, as lines of text that can be compared.
namespace ScenePicture {

/// Its blocks and notes, whatever their order.
inline QStringList pictureOf(const QGraphicsScene& scene)
{
    QStringList lines;
    for (const QGraphicsItem* item : scene.items()) {
        const QRectF at = item->sceneBoundingRect();
        QString what;
        if (const auto* block = qgraphicsitem_cast<const BlockItem*>(item))
            what = QString("block %1/%2/%3 %4")
                       .arg(static_cast<int>(block->block().kind))
                       .arg(block->block().trackIndex)
                       .arg(block->block().blockIndex)
                       .arg(block->label());
        else if (const auto* key = qgraphicsitem_cast<const NoteItem*>(item))
            what = QString("note %1 %2").arg(key->index()).arg(key->pitch());
        else
            continue;
        lines.append(QString("%1 at %2,%3 %4x%5")
                         .arg(what)
                         .arg(at.x())
                         .arg(at.y())
                         .arg(at.width())
                         .arg(at.height()));
    }
    lines.sort();
    return lines;
}

/// What one picture has ahead of the other; empty for the same.
inline QString difference(const QString& scene, const QStringList& shown, const QStringList& made)
{
    if (shown == made)
        return {};
    const QSet<QString> left = QSet<QString>(shown.begin(), shown.end());
    const QSet<QString> right = QSet<QString>(made.begin(), made.end());
    return QString("The %1 does not show the song.\nOnly shown: %2\nNot shown: %3")
        .arg(scene, (left - right).values().join("; "), (right - left).values().join("; "));
}

} // namespace ScenePicture
