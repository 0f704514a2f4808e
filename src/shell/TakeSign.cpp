#include "shell/TakeSign.h"

#include "shell/controls/ClockText.h"

#include <QLabel>
#include <QStyle>
#include <QToolButton>
#include <QVariant>

namespace {

/// Often enough that no second is seen to be skipped.
constexpr int kTickMs = 200;

/// Has the style sheet look at the widget again.
void setRecordingLook(QWidget& widget, bool recording)
{
    widget.setProperty("recording", recording);
    widget.style()->unpolish(&widget);
    widget.style()->polish(&widget);
    widget.update();
}

} // namespace

TakeSign::TakeSign(QToolButton* record, QToolButton* cancel, QObject* parent)
    : QObject(parent), record_(record), clock_(record->parentWidget()->findChild<QLabel*>()),
      cancel_(cancel), caption_(clock_->text())
{
    cancel_->parentWidget()->hide();
    tick_.setInterval(kTickMs);
    connect(&tick_, &QTimer::timeout, this, &TakeSign::showTime);
}

void TakeSign::show(bool recording)
{
    // What stands beside the clock stays where it is as the digits change.
    clock_->setMinimumWidth(recording ? clock_->width() : 0);
    setRecordingLook(*record_, recording);
    setRecordingLook(*clock_, recording);
    cancel_->parentWidget()->setVisible(recording);
    if (recording) {
        elapsed_.start();
        tick_.start();
        showTime();
    } else {
        tick_.stop();
        clock_->setText(caption_);
    }
}

void TakeSign::showTime()
{
    clock_->setText(clockText(elapsed_.elapsed() / 1000));
}
