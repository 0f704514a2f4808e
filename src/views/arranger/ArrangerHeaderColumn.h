#pragma once

#include <QWidget>

class TrackArranger;
struct LaneInfo;

/// The left column of the arranger: the names of the lanes, with their mute buttons.
class ArrangerHeaderColumn : public QWidget {
    Q_OBJECT

public:
    explicit ArrangerHeaderColumn(TrackArranger* arranger, QWidget* parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// The row of a lane in the pixels of this widget.
    QRect rowOf(const LaneInfo& lane) const;

    const LaneInfo* laneAt(int y) const;
    void paintRow(QPainter& painter, const LaneInfo& lane) const;
    void paintMuteButton(QPainter& painter, const QRect& row, bool muted,
                         const QColor& textColor) const;

    TrackArranger* arranger_;
};
