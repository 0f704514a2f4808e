#pragma once

#include "views/arranger/LaneSelection.h"

#include <QWidget>

class Project;

/// The left column of the arranger: the names of the lanes, with their mute buttons.
class ArrangerHeaderColumn : public QWidget {
    Q_OBJECT

public:
    explicit ArrangerHeaderColumn(QWidget* parent = nullptr);

    /// The project is not owned; without one no lane is shown.
    void setLanes(const Project* project, const QList<LaneInfo>& lanes);

    const Project* project() const { return project_; }

    const QList<LaneInfo>& lanes() const { return lanes_; }

    void setSelection(const LaneSelection& selection);

    const LaneSelection& selection() const { return selection_; }

    /// In pixels.
    void setScroll(int scroll);

    /// Whether the arranger has the keys: then the lane that they are on may show.
    void setHasKeys(bool hasKeys);

    /// What a place of it is for: a mute button in its present state, or a name that is cut.
    QString toolTipAt(const QPoint& place) const;

    /// The row of a lane in the pixels of this widget.
    QRect rowOf(const LaneInfo& lane) const;

    /// As if the user went to a lane, or folded or unfolded a group.
    void requestLane(const LaneRef& lane) { emit laneRequested(lane); }

    void requestFold(const QString& groupKey) { emit foldRequested(groupKey); }

signals:
    /// A lane was pressed. An additive press takes further tracks along.
    void lanePressed(const LaneRef& lane, bool additive);

    void laneRequested(const LaneRef& lane);
    void foldRequested(const QString& groupKey);

    /// Its mute button was pressed.
    void mutePressed(const LaneInfo& lane);

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const LaneInfo* laneAt(int y) const;

    /// The name of a lane as far as there is room for it, and whether that is not all.
    QString shownText(const LaneInfo& lane) const;
    bool isCut(const LaneInfo& lane) const;
    void paintRow(QPainter& painter, const LaneInfo& lane) const;
    bool showsKeys(const LaneInfo& lane) const;
    static void paintKeyMark(QPainter& painter, const QRect& row);
    void paintMuteButton(QPainter& painter, const QRect& row, bool muted,
                         const QColor& textColor) const;

    const Project* project_ = nullptr;
    QList<LaneInfo> lanes_;
    LaneSelection selection_;
    int scroll_ = 0;
    bool hasKeys_ = false;
};
