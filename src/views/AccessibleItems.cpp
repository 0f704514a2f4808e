#include "views/AccessibleItems.h"

#include "views/Announcements.h"

#include <QWidget>

namespace {

/// One thing on a widget. It goes with the widget, and is not valid while its place holds nothing.
class Item : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    Item(const AccessibleItems* owner, int place) : owner_(owner), place_(place) {}

    int place() const { return place_; }

    bool isValid() const override
    {
        const ItemSource* source = owner_->source();
        return source && place_ < source->count();
    }

    QObject* object() const override { return nullptr; }

    QWindow* window() const override { return owner_->window(); }

    QAccessibleInterface* parent() const override
    {
        return QAccessible::queryAccessibleInterface(owner_->object());
    }

    QAccessibleInterface* child(int) const override { return nullptr; }

    QAccessibleInterface* childAt(int, int) const override { return nullptr; }

    int childCount() const override { return 0; }

    int indexOfChild(const QAccessibleInterface*) const override { return -1; }

    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QRect rect() const override { return isValid() ? owner_->rectOf(place_) : QRect(); }

    QString text(QAccessible::Text kind) const override
    {
        if (!isValid())
            return {};
        if (kind == QAccessible::Value)
            return owner_->source()->valueOf(place_);
        return kind == QAccessible::Name ? owner_->source()->nameOf(place_) : QString();
    }

    void setText(QAccessible::Text, const QString&) override {}

    QAccessible::State state() const override;

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }

    void doAction(const QString& name) override;

    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    const AccessibleItems* owner_;
    int place_;
};

QAccessible::State Item::state() const
{
    QAccessible::State state;
    state.invalid = !isValid();
    if (state.invalid)
        return state;
    const ItemSource& source = *owner_->source();
    state.selectable = true;
    state.focusable = true;
    state.selected = source.isSelected(place_);
    state.focused = owner_->hasKeys() && source.current() == place_;
    state.offscreen = source.rectOf(place_).isEmpty();
    return state;
}

void Item::doAction(const QString& name)
{
    if (!isValid())
        return;
    if (name == pressAction())
        owner_->source()->press(place_);
    else if (name == setFocusAction())
        owner_->source()->select(place_);
    if (name == setFocusAction())
        static_cast<QWidget*>(owner_->object())->setFocus(Qt::OtherFocusReason);
}

AccessibleItems* itemsOf(QWidget* widget)
{
    return dynamic_cast<AccessibleItems*>(QAccessible::queryAccessibleInterface(widget));
}

void tell(QAccessibleInterface* item, QAccessible::Event kind)
{
    QAccessibleEvent event(item, kind);
    Announcements::tell(event);
}

} // namespace

AccessibleItems::AccessibleItems(QWidget* widget, QWidget* shown,
                                 std::unique_ptr<ItemSource> source)
    : QAccessibleWidget(widget, QAccessible::List), shown_(shown), source_(std::move(source))
{}

AccessibleItems::~AccessibleItems()
{
    forgetFrom(0);
}

QRect AccessibleItems::rectOf(int place) const
{
    const QRect rect = source_->rectOf(place);
    return shown_ && !rect.isNull() ? rect.translated(shown_->mapToGlobal(QPoint())) : QRect();
}

bool AccessibleItems::hasKeys() const
{
    // A view has the keys by way of its editor.
    return isValid() && widget()->hasFocus();
}

int AccessibleItems::childCount() const
{
    return isValid() ? source_->count() : 0;
}

QAccessibleInterface* AccessibleItems::child(int place) const
{
    if (place < 0 || place >= childCount())
        return nullptr;
    QAccessible::Id& id = ids_[place];
    if (QAccessibleInterface* known = id ? QAccessible::accessibleInterface(id) : nullptr)
        return known;
    auto* item = new Item(this, place);
    id = QAccessible::registerAccessibleInterface(item);
    return item;
}

int AccessibleItems::indexOfChild(const QAccessibleInterface* child) const
{
    const auto* item = dynamic_cast<const Item*>(child);
    return item && item->parent() == this ? item->place() : -1;
}

QAccessibleInterface* AccessibleItems::childAt(int x, int y) const
{
    // What comes later lies over what comes before.
    for (int place = childCount() - 1; place >= 0; --place) {
        if (rectOf(place).contains(x, y))
            return child(place);
    }
    return nullptr;
}

QAccessibleInterface* AccessibleItems::focusChild() const
{
    return hasKeys() ? child(source_->current()) : nullptr;
}

void AccessibleItems::forgetFrom(int place)
{
    for (auto id = ids_.begin(); id != ids_.end();) {
        if (id.key() < place) {
            ++id;
            continue;
        }
        QAccessible::deleteAccessibleInterface(*id);
        id = ids_.erase(id);
    }
}

void AccessibleItems::tellChange(QWidget* widget)
{
    if (!Announcements::areHeard())
        return;
    if (AccessibleItems* items = itemsOf(widget)) {
        items->forgetFrom(items->childCount());
        QAccessibleEvent event(widget, QAccessible::ObjectReorder);
        Announcements::tell(event);
    }
}

void AccessibleItems::tellCurrent(QWidget* widget)
{
    if (!Announcements::areHeard())
        return;
    const AccessibleItems* items = itemsOf(widget);
    QAccessibleInterface* item = items ? items->child(items->source_->current()) : nullptr;
    if (!item)
        return;
    tell(item, QAccessible::NameChanged);
    tell(item, QAccessible::Selection);
    tell(item, QAccessible::Focus);
}

// ---- Tellers -------------------------------------------------------------------------------

AccessibleTeller::AccessibleTeller(QWidget* widget, QAccessible::Role role, Words words,
                                   Focus focus)
    : QAccessibleWidget(widget, role), words_(std::move(words)), focus_(std::move(focus))
{}

QString AccessibleTeller::text(QAccessible::Text kind) const
{
    if (!words_ || (kind != QAccessible::Description && kind != QAccessible::Value))
        return QAccessibleWidget::text(kind);
    return isValid() ? words_() : QString();
}

QAccessibleInterface* AccessibleTeller::focusChild() const
{
    if (isValid() && widget()->hasFocus() && focus_) {
        if (QAccessibleInterface* part = focus_())
            return part;
    }
    return QAccessibleWidget::focusChild();
}
