#include "views/arranger/ArrangerHeaderColumn.h"

#include "model/Project.h"
#include "shell/controls/PlainText.h"
#include "shell/theme/CanvasColors.h"
#include "views/arranger/ArrangerLayout.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kTextLeft = 8;
constexpr int kTextRightOfTracks = 28;
constexpr int kTextRightOfHeadings = 4;
constexpr qreal kMuteRadius = 3.0;
constexpr int kMuteOutlineAlpha = 110;
constexpr int kKeyMarkWidth = 2;

/// How a row looks. Without a colour the background of the column shows.
struct RowLook {
    std::optional<QColor> background = {};
    QColor text;
    bool isHeading = false;
    /// Whether the lane is muted; nothing for a row without the button.
    std::optional<bool> muted = {};
};

QFont boldFont(QFont font, qreal smallerBy, qreal least)
{
    font.setWeight(QFont::Bold);
    font.setPointSizeF(std::max(font.pointSizeF() - smallerBy, least));
    return font;
}

template <typename TrackList>
std::optional<bool> mutedAt(const TrackList& tracks, int index)
{
    if (index < 0 || index >= tracks.size())
        return std::nullopt;
    return tracks.at(index).muted;
}

RowLook noteTrackLook(const LaneInfo& lane, const Project& project, const LaneSelection& selection)
{
    RowLook look{.text = canvasColors().headerText,
                 .muted = mutedAt(project.tracks, lane.trackIndex)};
    if (!selection.tracks.contains(lane.trackIndex))
        return look;
    look.background = lane.trackIndex == selection.activeTrack ? kLaneSelected : kLaneSelectedAlt;
    look.text = Qt::white;
    return look;
}

RowLook audioTrackLook(const LaneInfo& lane, const Project& project, const LaneSelection& selection)
{
    RowLook look{.text = canvasColors().headerText,
                 .muted = mutedAt(project.audioTracks, lane.trackIndex)};
    if (lane.trackIndex != selection.audioTrack)
        return look;
    look.background = kLaneSelected;
    look.text = Qt::white;
    return look;
}

QColor groupBackground()
{
    return ThemeManager::instance()->isDark() ? QColor(0x21, 0x2a, 0x14) : QColor(0xc9, 0xe0, 0xb0);
}

RowLook lookOf(const LaneInfo& lane, const Project& project, const LaneSelection& selection)
{
    switch (lane.kind) {
    case LaneKind::Harmony:
        return {.background = selection.chords ? kLaneSelected : canvasColors().laneHarmony,
                .text = selection.chords ? QColor(Qt::white) : canvasColors().headerText,
                .muted = project.harmonyTrack.muted};
    case LaneKind::Section:
        return {.background = kLaneSelected, .text = Qt::white, .isHeading = true};
    case LaneKind::Group:
        return {
            .background = groupBackground(), .text = canvasColors().headerText, .isHeading = true};
    case LaneKind::NoteTrack:
        return noteTrackLook(lane, project, selection);
    case LaneKind::AudioTrack:
        return audioTrackLook(lane, project, selection);
    }
    return {};
}

QString textOf(const LaneInfo& lane)
{
    if (lane.kind != LaneKind::Group)
        return lane.label;
    return u"%1 %2 (%3)"_s.arg(lane.collapsed ? u"▸"_s : u"▾"_s, lane.label,
                               QString::number(lane.childCount));
}

} // namespace

ArrangerHeaderColumn::ArrangerHeaderColumn(QWidget* parent) : QWidget(parent)
{
    setFixedWidth(ArrangerLayout::kHeaderWidth);
    setAutoFillBackground(true);
    setToolTip(tr("Click en un grupo lo pliega o lo despliega. «M» silencia ese carril."));
}

void ArrangerHeaderColumn::setLanes(const Project* project, const QList<LaneInfo>& lanes)
{
    project_ = project;
    lanes_ = lanes;
    update();
}

void ArrangerHeaderColumn::setSelection(const LaneSelection& selection)
{
    selection_ = selection;
    update();
}

void ArrangerHeaderColumn::setScroll(int scroll)
{
    scroll_ = scroll;
    update();
}

void ArrangerHeaderColumn::setHasKeys(bool hasKeys)
{
    hasKeys_ = hasKeys;
    update();
}

QRect ArrangerHeaderColumn::rowOf(const LaneInfo& lane) const
{
    return {0, lane.top - scroll_, width(), lane.height};
}

const LaneInfo* ArrangerHeaderColumn::laneAt(int y) const
{
    return ArrangerLayout::laneAtY(lanes_, y + scroll_);
}

QString ArrangerHeaderColumn::toolTipAt(const QPoint& place) const
{
    const LaneInfo* lane = project_ ? laneAt(place.y()) : nullptr;
    if (!lane)
        return toolTip();
    const std::optional<bool> muted = lookOf(*lane, *project_, selection_).muted;
    if (muted && ArrangerLayout::muteSquare(rowOf(*lane)).contains(place))
        return *muted ? tr("Este carril está en silencio. Click para volver a oírlo.")
                      : tr("Click para silenciar este carril.");
    return isCut(*lane) ? plainToolTip(lane->label) : toolTip();
}

bool ArrangerHeaderColumn::isCut(const LaneInfo& lane) const
{
    return lane.kind != LaneKind::Section && lane.kind != LaneKind::Group &&
           shownText(lane) != textOf(lane);
}

QString ArrangerHeaderColumn::shownText(const LaneInfo& lane) const
{
    // Its middle is left out, since lanes of one rhythm begin alike.
    return fontMetrics().elidedText(textOf(lane), Qt::ElideMiddle,
                                    width() - kTextLeft - kTextRightOfTracks);
}

bool ArrangerHeaderColumn::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    QToolTip::showText(help->globalPos(), toolTipAt(help->pos()), this);
    return true;
}

void ArrangerHeaderColumn::mousePressEvent(QMouseEvent* event)
{
    const QPoint place = event->position().toPoint();
    const LaneInfo* found = project_ ? laneAt(place.y()) : nullptr;
    if (!found)
        return;
    // The lanes are made anew by what the press does.
    const LaneInfo lane = *found;
    if (lane.kind == LaneKind::Group) {
        emit foldRequested(lane.groupKey);
    } else if (ArrangerLayout::muteSquare(rowOf(lane)).contains(place)) {
        emit mutePressed(lane);
        update();
    } else if (lane.kind != LaneKind::Section) {
        emit lanePressed(BlockOrder::refOf(lane), event->modifiers() & Qt::ControlModifier);
    }
}

void ArrangerHeaderColumn::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), canvasColors().headerBackground);
    if (!project_)
        return;
    for (const LaneInfo& lane : lanes_) {
        if (rowOf(lane).intersects(rect()))
            paintRow(painter, lane);
    }
}

void ArrangerHeaderColumn::paintRow(QPainter& painter, const LaneInfo& lane) const
{
    const QRect row = rowOf(lane);
    const RowLook look = lookOf(lane, *project_, selection_);
    if (look.background)
        painter.fillRect(row, *look.background);
    painter.setPen(look.text);
    painter.setFont(look.isHeading ? boldFont(font(), 1.5, 6.5) : font());
    const int right = look.isHeading ? kTextRightOfHeadings : kTextRightOfTracks;
    const QRect textRect = row.adjusted(kTextLeft, 0, -right, 0);
    painter.drawText(textRect, Qt::AlignLeft | Qt::AlignVCenter,
                     look.isHeading ? textOf(lane) : shownText(lane));
    if (look.muted)
        paintMuteButton(painter, row, *look.muted, look.text);
    painter.setPen(canvasColors().laneSeparator);
    painter.drawLine(row.bottomLeft(), row.bottomRight());
    if (showsKeys(lane))
        paintKeyMark(painter, row);
}

/// A track on which the keys are is the active one, and shows that already.
bool ArrangerHeaderColumn::showsKeys(const LaneInfo& lane) const
{
    return (lane.kind == LaneKind::Harmony || lane.kind == LaneKind::Group) && hasKeys_ &&
           selection_.keyLaneShows && BlockOrder::refOf(lane) == selection_.keyLane;
}

void ArrangerHeaderColumn::paintKeyMark(QPainter& painter, const QRect& row)
{
    const bool dark = ThemeManager::instance()->isDark();
    const QColor color = dark ? ThemeManager::kAccentHover : ThemeManager::kAccentDeep;
    const QRect inner = row.adjusted(kKeyMarkWidth, kKeyMarkWidth, -kKeyMarkWidth, -kKeyMarkWidth);
    for (const QRect& edge : QRegion(row) - inner)
        painter.fillRect(edge, color);
}

void ArrangerHeaderColumn::paintMuteButton(QPainter& painter, const QRect& row, bool muted,
                                           const QColor& textColor) const
{
    const QRect square = ArrangerLayout::muteSquare(row);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QColor outline = textColor;
    outline.setAlpha(kMuteOutlineAlpha);
    painter.setPen(muted ? QPen(Qt::NoPen) : QPen(outline, 1.0));
    painter.setBrush(muted ? QBrush(kAudioBlock) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(square, kMuteRadius, kMuteRadius);
    painter.setPen(muted ? QColor(Qt::white) : textColor);
    painter.setFont(boldFont(font(), 2.0, 6.0));
    painter.drawText(square, Qt::AlignCenter, u"M"_s);
    painter.restore();
}
