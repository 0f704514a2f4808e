#pragma once

#include <QLabel>

/// A line of plain text that makes its place no wider: where it does not fit, its middle is left
/// out, and a tool tip tells the whole.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// What there is room for.
    QString shownText() const;
};
