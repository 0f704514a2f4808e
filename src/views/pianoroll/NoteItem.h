#pragma once

#include <QGraphicsRectItem>

/// One note of the block that is being edited. It holds nothing of the song but the note's place
/// in its block.
class NoteItem : public QGraphicsRectItem {
public:
    enum { Type = UserType + 1 };

    /// Of the item's data: the index of the note in its block.
    static constexpr int kIndexKey = 0;

    /// `rect` is in scene pixels.
    NoteItem(int index, int pitch, const QRectF& rect);

    int type() const override { return Type; }

    int index() const { return data(kIndexKey).toInt(); }

    int pitch() const { return pitch_; }

    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

private:
    void paintName(QPainter& painter, const QColor& fill) const;

    int pitch_;
};
