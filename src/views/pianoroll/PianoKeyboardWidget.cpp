#include "views/pianoroll/PianoKeyboardWidget.h"

#include "music/KeySignature.h"
#include "shell/theme/CanvasColors.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollLayout.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;
using namespace PianoRollLayout;

namespace {

constexpr int kLargestKeyName = 14;
constexpr int kSmallestKeyName = 8;
constexpr double kLettersOfRow = 0.5;
constexpr double kLeastHeightOfKeyName = 9.0;

constexpr int kBlackKeyMargin = 9;
constexpr int kWhiteKeyBeside = 30;

constexpr Qt::Alignment kNameAlignment = Qt::AlignRight | Qt::AlignVCenter;

QFont sized(QFont font, int pixels)
{
    font.setPixelSize(pixels);
    return font;
}

QString keyName(int pitch)
{
    return u"%1 / %2"_s.arg(KeySignature::letterName(pitch), KeySignature::solfegeName(pitch));
}

/// With the number of the octave at its first key.
QString whiteKeyName(int pitch)
{
    return pitch % 12 == 0 ? keyName(pitch) + QString::number(pitch / 12 - 1) : keyName(pitch);
}

/// The lower edge of a white key, in the middle of a black key where there is one.
double whiteKeyBottom(int pitch)
{
    return pitchToSceneY(pitch) + kRowPixels + (isBlackKey(pitch - 1) ? kRowPixels / 2 : 0);
}

} // namespace

PianoKeyboardWidget::PianoKeyboardWidget(const PianoRollGridView* view, QWidget* parent)
    : QWidget(parent), view_(view)
{
    const QFontMetrics metrics(sized(font(), kLargestKeyName));
    blackKeyWidth_ = metrics.horizontalAdvance(u"G# / Sol#"_s) + kBlackKeyMargin;
    setFixedWidth(blackKeyWidth_ + kWhiteKeyBeside);
    setAutoFillBackground(true);
}

int PianoKeyboardWidget::pitchAtY(int y) const
{
    return sceneYToPitch(view_->mapToScene(QPoint(0, y)).y());
}

// ---- Mouse ---------------------------------------------------------------------------------

void PianoKeyboardWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    release();
    press(pitchAtY(qRound(event->position().y())));
}

void PianoKeyboardWidget::mouseMoveEvent(QMouseEvent* event)
{
    const int pitch = pitchAtY(qRound(event->position().y()));
    if (pressedPitch_ == -1 || pitch == -1 || pitch == pressedPitch_)
        return;
    release();
    press(pitch);
}

void PianoKeyboardWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        release();
}

bool PianoKeyboardWidget::event(QEvent* event)
{
    // The release goes to the dialog that has opened.
    if (event->type() == QEvent::WindowBlocked)
        release();
    return QWidget::event(event);
}

void PianoKeyboardWidget::press(int pitch)
{
    pressedPitch_ = pitch;
    if (pitch != -1)
        emit keyPressed(pitch);
}

void PianoKeyboardWidget::release()
{
    const int pitch = std::exchange(pressedPitch_, -1);
    if (pitch != -1)
        emit keyReleased(pitch);
}

void PianoKeyboardWidget::wheelEvent(QWheelEvent* event)
{
    emit wheelTurned(event->angleDelta().y());
    event->accept();
}

// ---- Painting ------------------------------------------------------------------------------

QFont PianoKeyboardWidget::keyFont() const
{
    const int rowHeight = static_cast<int>(view_->transform().m22() * kRowPixels);
    return sized(font(), std::clamp(static_cast<int>(rowHeight * kLettersOfRow), kSmallestKeyName,
                                    kLargestKeyName));
}

void PianoKeyboardWidget::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), canvasColors().keyWhite);
    painter.setFont(keyFont());
    paintSeparators(painter);
    for (int pitch = kLowestPitch; pitch <= kHighestPitch; ++pitch)
        paintKey(painter, pitch);
    painter.setPen(canvasColors().keyLine);
    painter.drawLine(rect().topRight(), rect().bottomRight());
}

void PianoKeyboardWidget::paintSeparators(QPainter& painter) const
{
    // A rectangle is rounded as the rows of the grid are, and a line is not.
    const double pixel = 1.0 / painter.deviceTransform().m11();
    for (int pitch = kLowestPitch; pitch <= kHighestPitch; ++pitch) {
        const double y = view_->viewportY(whiteKeyBottom(pitch));
        if (!isBlackKey(pitch) && y >= 0.0 && y <= height())
            painter.fillRect(QRectF(0.0, y, width(), pixel), canvasColors().keyLine);
    }
}

void PianoKeyboardWidget::paintKey(QPainter& painter, int pitch) const
{
    const double top = view_->viewportY(pitchToSceneY(pitch));
    const double bottom = view_->viewportY(pitchToSceneY(pitch) + kRowPixels);
    if (bottom < 0.0 || top > height())
        return;
    const QRectF row(0.0, top, width(), bottom - top);
    if (isBlackKey(pitch))
        paintBlackKey(painter, pitch, row);
    else
        paintWhiteKey(painter, pitch, row);
}

void PianoKeyboardWidget::paintBlackKey(QPainter& painter, int pitch, const QRectF& row) const
{
    const QRectF key(0.0, row.top(), blackKeyWidth_, row.height());
    painter.fillRect(key, canvasColors().keyBlack);
    if (row.height() <= kLeastHeightOfKeyName)
        return;
    const QRectF place = key.adjusted(3, 0, -6, 0);
    const QString name = keyName(pitch);
    const bool fits = painter.fontMetrics().horizontalAdvance(name) <= place.width();
    painter.setPen(Qt::white);
    painter.drawText(place, kNameAlignment, fits ? name : KeySignature::solfegeName(pitch));
}

void PianoKeyboardWidget::paintWhiteKey(QPainter& painter, int pitch, const QRectF& row) const
{
    if (row.height() <= kLeastHeightOfKeyName)
        return;
    painter.setPen(canvasColors().keyText);
    painter.drawText(QRectF(4.0, row.top(), width() - 10.0, row.height()), kNameAlignment,
                     whiteKeyName(pitch));
}
