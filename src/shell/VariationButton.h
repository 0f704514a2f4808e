#pragma once

#include "views/LoopDragPayload.h"

#include <QPoint>
#include <QToolButton>

#include <functional>
#include <utility>

class QDrag;

/// A variant of a loop, as its number on a square button: a click is one gesture, a drag to the
/// arranger another, and no movement of the mouse is both.
class VariationButton : public QToolButton {
    Q_OBJECT

public:
    VariationButton(const QString& rhythmId, const QString& layerId, LoopSection section,
                    int variantIndex, QWidget* parent = nullptr);

    /// What a drag of this button carries.
    const LoopDragPayload& payload() const { return payload_; }

    /// Whether a drag from this button is under way. It runs the event loop and does not survive
    /// the button: whoever wants to delete it waits for dragFinished().
    bool isDragging() const { return dragging_; }

    /// Puts something in the place of QDrag::exec(), which hands the mouse to the platform.
    void setDragRunner(std::function<void(QDrag&)> run) { runDrag_ = std::move(run); }

signals:
    /// After each drag, wherever it ended.
    void dragFinished();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void startDrag();

    LoopDragPayload payload_;
    /// Runs a drag, which the button owns, to its end.
    std::function<void(QDrag&)> runDrag_;
    /// Where the left button went down.
    QPoint dragStart_;
    bool dragging_ = false;
    /// A drag has been made of the press that lasts.
    bool pressUsedUp_ = false;
};
