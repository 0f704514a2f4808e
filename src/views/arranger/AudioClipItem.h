#pragma once

#include "views/arranger/BlockItem.h"
#include "views/arranger/ClipShape.h"
#include "voice/ClipSound.h"

#include <memory>

class WaveOutlines;
class WavePeaks;

/// A clip of a voice: its block shows how the voice swings, its gain as a line and its fades as
/// ramps with handles.
class AudioClipItem : public BlockItem {
public:
    /// `shape` plays as long as its record does, and the path of `file` may be empty. `outlines` is
    /// not owned, and outlives the item; null shows no voice.
    AudioClipItem(const BlockRef& block, const ClipShape& shape, const QString& label,
                  const ClipSource& file, WaveOutlines* outlines);

    /// As it is drawn: what is played ends with the file, as soon as one knows where that is, and
    /// with nothing else for a record without a length.
    ClipShape clip() const;

    /// Whether its voice is known, as far as there is one.
    bool isDrawn() const { return outline() != nullptr; }

protected:
    void paintContent(QPainter& painter, const QRectF& exposed, const QColor& color) override;

    bool hasContent() const override { return true; }

    void hoverMoveEvent(QGraphicsSceneHoverEvent* event) override;

private:
    /// Null until it is known.
    std::shared_ptr<const WavePeaks> outline() const;

    ClipShape shape_;
    ClipSource file_;
    WaveOutlines* outlines_;
};
