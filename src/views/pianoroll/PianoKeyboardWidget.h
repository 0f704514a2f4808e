#pragma once

#include <QWidget>

class PianoRollGridView;

/// The keys at the left of the piano roll, each in line with the row of its pitch. They know
/// nothing of music: they tell which key the mouse holds.
class PianoKeyboardWidget : public QWidget {
    Q_OBJECT

public:
    /// The view is not owned. Keys stand as its rows do.
    explicit PianoKeyboardWidget(const PianoRollGridView* view, QWidget* parent = nullptr);

    const PianoRollGridView* view() const { return view_; }

    /// The pitch of the row at a height of the widget; -1 outside the rows.
    int pitchAtY(int y) const;

    /// The key that the mouse holds; -1 for none.
    int pressedPitch() const { return pressedPitch_; }

    /// Lets go of that key, as if the mouse did.
    void release();

    /// Pixels; the widest name fits at its largest.
    int blackKeyWidth() const { return blackKeyWidth_; }

signals:
    void keyPressed(int pitch);
    void keyReleased(int pitch);

    /// The wheel was turned by an angle over the keys.
    void wheelTurned(int angleDelta);

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void press(int pitch);

    QFont keyFont() const;
    void paintSeparators(QPainter& painter) const;
    void paintKey(QPainter& painter, int pitch) const;
    void paintBlackKey(QPainter& painter, int pitch, const QRectF& row) const;
    void paintWhiteKey(QPainter& painter, int pitch, const QRectF& row) const;

    const PianoRollGridView* view_;
    int pressedPitch_ = -1;
    int blackKeyWidth_ = 0;
};
