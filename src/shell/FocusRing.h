#pragma once

#include <QWidget>

/// A frame inside the edges of a widget as long as that widget, or anything in it, has the keys.
/// It takes no room and no clicks. What it lies on scrolls as fast as without it, since it is
/// nothing but its four edges.
class FocusRing : public QWidget {
    Q_OBJECT

public:
    /// Becomes a child of `framed`, follows its size, and stays above its other children.
    explicit FocusRing(QWidget* framed);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void follow(const QWidget* focused);
    void fit();
};
