#pragma once

#include <QHBoxLayout>

/// A row that goes on below where the width ends, line after line. What is in it keeps the size
/// that it likes; stretches take no room.
class WrappingRow : public QHBoxLayout {
    Q_OBJECT

public:
    using QHBoxLayout::QHBoxLayout;

    /// Room for the widest of its widgets.
    QSize minimumSize() const override;

    bool hasHeightForWidth() const override { return true; }

    int heightForWidth(int width) const override;

    int minimumHeightForWidth(int width) const override { return heightForWidth(width); }

    void setGeometry(const QRect& rect) override;
};
