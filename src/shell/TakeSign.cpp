#include "shell/TakeSign.h"

#include "shell/LevelMeter.h"
#include "shell/controls/ClockText.h"

#include <QLabel>
#include <QStyle>
#include <QToolButton>
#include <QVariant>

#include <algorithm>

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

TakeSign::TakeSign(QToolButton* record, QToolButton* cancel, LevelMeter* meter, QObject* parent)
    : QObject(parent), record_(record), clock_(record->parentWidget()->findChild<QLabel*>()),
      cancel_(cancel), meter_(meter), caption_(clock_->text())
{
    cancel_->parentWidget()->hide();
    meter_->parentWidget()->hide();
    tick_.setInterval(kTickMs);
    connect(&tick_, &QTimer::timeout, this, &TakeSign::showTime);
}

void TakeSign::show(bool recording)
{
    // What stands beside the clock stays where it is as the digits change.
    clock_->setMinimumWidth(recording ? std::max(clock_->minimumWidth(), clock_->width()) : 0);
    setRecordingLook(*record_, recording);
    setRecordingLook(*clock_, recording);
    cancel_->parentWidget()->setVisible(recording);
    meter_->parentWidget()->setVisible(recording);
    meter_->clear();
    if (recording) {
        elapsed_.start();
        tick_.start();
        showTime();
    } else {
        tick_.stop();
        clock_->setText(caption_);
    }
}

void TakeSign::showCount(int click)
{
    tick_.stop();
    clock_->setText(QString::number(click));
}

void TakeSign::showLevel(float peak)
{
    meter_->take(peak);
}

void TakeSign::showTime()
{
    clock_->setText(clockText(elapsed_.elapsed() / 1000));
}
