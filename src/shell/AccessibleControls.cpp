#include "shell/AccessibleControls.h"

#include "views/AccessibleItems.h"

#include <QAbstractItemView>
#include <QComboBox>

#include <algorithm>
#include <array>

namespace {

/// Parts of the window that hold controls.
constexpr std::array<QLatin1StringView, 4> kParts{
    QLatin1StringView("TransportControls"), QLatin1StringView("RibbonGroup"),
    QLatin1StringView("LoopBrowser"), QLatin1StringView("TrackHeaderPanel")};

QAccessibleInterface* controlOf(const QString& className, QObject* object)
{
    if (!object->isWidgetType())
        return nullptr;
    if (className == QLatin1StringView("QComboBox")) {
        // One that is typed into is a field besides, which the toolkit tells.
        auto* box = static_cast<QComboBox*>(object);
        return box->isEditable() ? nullptr : new AccessibleChoice(box);
    }
    if (std::ranges::find(kParts, className) != kParts.end())
        return new AccessibleTeller(static_cast<QWidget*>(object), QAccessible::Grouping);
    return nullptr;
}

} // namespace

void AccessibleControls::install()
{
    QAccessible::installFactory(controlOf);
}

AccessibleChoice::AccessibleChoice(QComboBox* box) : QAccessibleWidget(box, QAccessible::ComboBox)
{}

QComboBox* AccessibleChoice::box() const
{
    return static_cast<QComboBox*>(widget());
}

int AccessibleChoice::childCount() const
{
    return isValid() ? 1 : 0;
}

QAccessibleInterface* AccessibleChoice::child(int index) const
{
    return isValid() && index == 0 ? QAccessible::queryAccessibleInterface(box()->view()) : nullptr;
}

int AccessibleChoice::indexOfChild(const QAccessibleInterface* child) const
{
    return isValid() && child && child->object() == box()->view() ? 0 : -1;
}

QString AccessibleChoice::text(QAccessible::Text kind) const
{
    if (!isValid())
        return {};
    if (kind == QAccessible::Value || kind == QAccessible::Description)
        return box()->currentText();
    return QAccessibleWidget::text(kind);
}

QAccessible::State AccessibleChoice::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    if (!isValid())
        return state;
    state.expandable = true;
    state.hasPopup = true;
    state.expanded = box()->view()->isVisible();
    return state;
}

QStringList AccessibleChoice::actionNames() const
{
    return {showMenuAction(), pressAction(), setFocusAction()};
}

void AccessibleChoice::doAction(const QString& name)
{
    if (!isValid())
        return;
    if (name != showMenuAction() && name != pressAction())
        QAccessibleWidget::doAction(name);
    else if (box()->view()->isVisible())
        box()->hidePopup();
    else
        box()->showPopup();
}
