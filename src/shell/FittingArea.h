#pragma once

#include <QScrollArea>

#include <functional>

/// A place for a widget that scrolls down where the widget does not fit, and is never lower than it
/// is told. It takes no focus.
class FittingArea : public QScrollArea {
    Q_OBJECT

public:
    /// What it likes to be: as high as all that is in it, or as low as may be.
    enum class Wish { All, Least };

    /// Takes over the widget. The function says the least height, and is asked again whenever the
    /// widget's own layout changes.
    FittingArea(QWidget* content, Wish wish, std::function<int()> leastHeight,
                QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void keepLeastHeight();

    Wish wish_;
    std::function<int()> leastHeight_;
};
