#include "views/PlayheadFollower.h"

#include <QApplication>
#include <QGraphicsView>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <chrono>
#include <cmath>

namespace {

/// Pixels of what has been heard, before the playhead on a page that was turned.
constexpr double kLead = 24.0;

qint64 steadyMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

PlayheadFollower::PlayheadFollower(QGraphicsView* view)
    : QObject(view), view_(view), clock_(steadyMs)
{
    connect(view->horizontalScrollBar(), &QScrollBar::valueChanged, this, [this] {
        if (!turning_)
            scrolledAt_ = clock_();
    });
}

std::optional<int> PlayheadFollower::turnedPage(double playhead, int width, int scroll)
{
    if (width <= 0 || (playhead >= 0.0 && playhead < width))
        return std::nullopt;
    return scroll + static_cast<int>(std::floor(playhead - kLead));
}

void PlayheadFollower::follow(double sceneX)
{
    if (!on_ || isLeftAlone())
        return;
    const double playhead = view_->viewportTransform().map(QPointF(sceneX, 0.0)).x();
    if (const auto scroll =
            turnedPage(playhead, view_->viewport()->width(), view_->horizontalScrollBar()->value()))
        scrollTo(*scroll);
}

/// Under a mouse that holds something, or a menu for a place of the page, the page must not go.
bool PlayheadFollower::isLeftAlone() const
{
    return (scrolledAt_ && clock_() - *scrolledAt_ < kRestMs) ||
           QGuiApplication::mouseButtons() != Qt::NoButton || QApplication::activePopupWidget();
}

void PlayheadFollower::showStart()
{
    scrollTo(0);
    scrolledAt_.reset();
}

void PlayheadFollower::scrollTo(int value)
{
    const QScopedValueRollback turning(turning_, true);
    view_->horizontalScrollBar()->setValue(value);
}
