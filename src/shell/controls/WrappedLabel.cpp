#include "shell/controls/WrappedLabel.h"

WrappedLabel::WrappedLabel(const QString& text, QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setText(text);
}

QSize WrappedLabel::minimumSizeHint() const
{
    return {QLabel::minimumSizeHint().width(), heightForWidth(width())};
}

void WrappedLabel::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    updateGeometry();
}
