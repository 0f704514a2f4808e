#pragma once

#include <QWidget>

class TrackArranger;
struct LaneInfo;

/// The left column of the arranger: the names of the lanes, with their mute buttons.
class ArrangerHeaderColumn : public QWidget {
    Q_OBJECT

public:
    explicit ArrangerHeaderColumn(TrackArranger* arranger, QWidget* parent = nullptr);

    /// What a place of it is for: a mute button in its present state, or a name that is cut.
    QString toolTipAt(const QPoint& place) const;

    TrackArranger* arranger() const { return arranger_; }

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// The row of a lane in the pixels of this widget.
    QRect rowOf(const LaneInfo& lane) const;

    const LaneInfo* laneAt(int y) const;

    /// The name of a lane as far as there is room for it, and whether that is not all.
    QString shownText(const LaneInfo& lane) const;
    bool isCut(const LaneInfo& lane) const;
    void paintRow(QPainter& painter, const LaneInfo& lane) const;
    bool showsKeys(const LaneInfo& lane) const;
    static void paintKeyMark(QPainter& painter, const QRect& row);
    void paintMuteButton(QPainter& painter, const QRect& row, bool muted,
                         const QColor& textColor) const;

    TrackArranger* arranger_;
};
