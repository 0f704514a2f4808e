#include "shell/FocusRing.h"

#include "shell/theme/ThemeManager.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>

namespace {

constexpr int kThickness = 2;

} // namespace

FocusRing::FocusRing(QWidget* framed) : QWidget(framed)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    framed->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { follow(now); });
    fit();
    follow(QApplication::focusWidget());
}

void FocusRing::follow(const QWidget* focused)
{
    setVisible(focused && (focused == parentWidget() || parentWidget()->isAncestorOf(focused)));
    raise();
}

void FocusRing::fit()
{
    resize(parentWidget()->size());
    setMask(QRegion(rect()) - rect().adjusted(kThickness, kThickness, -kThickness, -kThickness));
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize)
        fit();
    return QWidget::eventFilter(watched, event);
}

void FocusRing::paintEvent(QPaintEvent*)
{
    const bool dark = ThemeManager::instance()->isDark();
    QPainter(this).fillRect(rect(), dark ? ThemeManager::kAccentHover : ThemeManager::kAccentDeep);
}
