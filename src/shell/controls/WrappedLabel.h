#pragma once

#include <QLabel>

/// Plain text of several lines that is never lower than what its lines take at the width that it
/// has: layouts inside of places that scroll leave a text that is wrapped fewer.
class WrappedLabel : public QLabel {
    Q_OBJECT

public:
    explicit WrappedLabel(const QString& text, QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
};
