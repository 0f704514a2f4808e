#include "shell/FirstSteps.h"

#include <QAbstractScrollArea>
#include <QEvent>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kMargin = 10;

} // namespace

FirstSteps::FirstSteps(const QStringList& steps, QAbstractScrollArea* view)
    // A child of the viewport would scroll along with what lies under it.
    : QLabel(steps.join(u'\n'), view), view_(view)
{
    setObjectName(u"primeros_pasos"_s);
    setTextFormat(Qt::PlainText);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setVisible(false);
    view->viewport()->installEventFilter(this);
}

void FirstSteps::setTold(bool told)
{
    told_ = told;
    fit();
}

bool FirstSteps::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Show)
        fit();
    return QLabel::eventFilter(watched, event);
}

void FirstSteps::fit()
{
    const QRect seen = view_->viewport()->geometry();
    const QSize needed = sizeHint();
    setVisible(told_ && needed.width() <= seen.width() &&
               needed.height() + kMargin <= seen.height());
    resize(needed);
    move(seen.x() + (seen.width() - width()) / 2, seen.bottom() + 1 - height() - kMargin);
}
