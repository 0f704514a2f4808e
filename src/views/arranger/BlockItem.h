#pragma once

#include "views/arranger/BlockEdits.h"

#include <QColor>
#include <QGraphicsRectItem>
#include <QString>

class BlockLabels;

/// One placed thing of the song, drawn as a coloured rectangle. It holds nothing of the song but
/// which record it stands for.
class BlockItem : public QGraphicsRectItem {
public:
    enum { Type = UserType + 10 };

    /// `rect` is in scene pixels. `chordColor` fills a chord; other kinds have colours of their
    /// own.
    BlockItem(const BlockRef& block, const QRectF& rect, const QString& label,
              const QColor& chordColor = QColor(0xe5, 0x39, 0x35));

    int type() const override { return Type; }

    const BlockRef& block() const { return block_; }

    const QString& label() const { return label_; }

    /// Shows where a loop begins anew; 0 for what does not repeat. In scene pixels.
    void setRepeat(double length) { repeat_ = length; }

    double repeat() const { return repeat_; }

    /// What the block says in place of its label where there is room for it, and always in its
    /// tool tip.
    void setFullLabel(const QString& label);

    const QString& fullLabel() const { return fullLabel_; }

    /// Who keeps labels shaped; not owned. Without one, each painting shapes its own.
    void setLabels(BlockLabels* labels) { labels_ = labels; }

    /// What fills the block while it is not selected.
    QColor fill() const;

    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

protected:
    /// Paints what there is to see of the record between the block and its label, in the pixels of
    /// the scene; `color` is what fills the block.
    virtual void paintContent(QPainter& /*painter*/, const QRectF& /*exposed*/,
                              const QColor& /*color*/)
    {}

    /// Whether there is such a thing, which the label has to be told from.
    virtual bool hasContent() const { return false; }

private:
    void paintLabel(QPainter& painter, const QColor& color) const;
    void paintRepeats(QPainter& painter, QColor ink) const;

    BlockRef block_;
    QString label_;
    QString fullLabel_;
    QColor chordColor_;
    double repeat_ = 0.0;
    BlockLabels* labels_ = nullptr;
};
