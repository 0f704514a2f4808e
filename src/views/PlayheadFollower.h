#pragma once

#include <QObject>

#include <functional>
#include <optional>

class QGraphicsView;

/// Turns the page of a view when the playhead of a song that plays leaves what is seen. Whoever
/// scrolls, zooms or holds something with the mouse is left alone. It belongs to the view.
class PlayheadFollower : public QObject {
    Q_OBJECT

public:
    /// In milliseconds from any moment on.
    using Clock = std::function<qint64()>;

    /// Follows until it is told not to.
    explicit PlayheadFollower(QGraphicsView* view);

    void setOn(bool on) { on_ = on; }

    bool isOn() const { return on_; }

    /// The playhead of a song that plays has come to a place of the scene.
    void follow(double sceneX);

    /// Shows the start of the scene, which is no scrolling of the user's.
    void showStart();

    void setClock(const Clock& clock) { clock_ = clock; }

    /// For so long after somebody has scrolled the page stays.
    static constexpr qint64 kRestMs = 3000;

    /// Where a view has to be scrolled to, by `scroll` pixels so far, so that the playhead at a
    /// pixel of its viewport stands near the left edge. Nothing while it is seen.
    static std::optional<int> turnedPage(double playhead, int width, int scroll);

private:
    bool isLeftAlone() const;
    void scrollTo(int value);

    QGraphicsView* view_;
    bool on_ = true;
    bool turning_ = false;
    Clock clock_;
    std::optional<qint64> scrolledAt_;
};
