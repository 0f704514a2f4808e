#pragma once

#include <QAccessibleWidget>
#include <QHash>
#include <QPointer>
#include <QRect>

#include <functional>
#include <memory>

/// The things that are drawn on a widget, as those hear of them who cannot see them. A thing is
/// known by its place in an order of the widget's own, from 0, which each edit may change.
class ItemSource {
public:
    virtual ~ItemSource() = default;

    virtual int count() const = 0;

    /// What it is, in words.
    virtual QString nameOf(int place) const = 0;

    /// How it is set, in words, where it can be set.
    virtual QString valueOf(int /*place*/) const { return {}; }

    /// In the pixels of the widget that shows it; null for what is not drawn.
    virtual QRect rectOf(int place) const = 0;

    virtual bool isSelected(int place) const = 0;

    /// The one that the keys are on; -1 for none.
    virtual int current() const = 0;

    /// As if the user had selected it.
    virtual void select(int place) = 0;

    /// As if the user had pressed it; selects, where there is no more to it.
    virtual void press(int place) { select(place); }
};

/// A widget whose children are what is drawn on it. They are made when somebody asks for them.
class AccessibleItems : public QAccessibleWidget {
public:
    /// `shown` is where the source draws: the viewport of a view, or the widget itself.
    AccessibleItems(QWidget* widget, QWidget* shown, std::unique_ptr<ItemSource> source);
    ~AccessibleItems() override;

    AccessibleItems(const AccessibleItems&) = delete;
    AccessibleItems& operator=(const AccessibleItems&) = delete;

    /// Null where the widget is gone.
    ItemSource* source() const { return isValid() ? source_.get() : nullptr; }

    /// In pixels of the screen.
    QRect rectOf(int place) const;

    bool hasKeys() const;

    int childCount() const override;
    QAccessibleInterface* child(int place) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;

    // What follows costs nothing as long as nobody listens.

    /// Tells that the things on a widget are others than before.
    static void tellChange(QWidget* widget);

    /// Tells which thing on a widget the keys are on, and that it is selected.
    static void tellCurrent(QWidget* widget);

private:
    void forgetFrom(int place);

    QPointer<QWidget> shown_;
    std::unique_ptr<ItemSource> source_;
    mutable QHash<int, QAccessible::Id> ids_;
};

/// A widget that says of itself, at the moment when it is asked, how things stand on it.
class AccessibleTeller : public QAccessibleWidget {
public:
    using Words = std::function<QString()>;
    using Focus = std::function<QAccessibleInterface*()>;

    /// `focus` gives the part that the keys are on, or null for the widget itself. Both may be
    /// empty.
    AccessibleTeller(QWidget* widget, QAccessible::Role role, Words words = {}, Focus focus = {});

    QString text(QAccessible::Text kind) const override;
    QAccessibleInterface* focusChild() const override;

private:
    Words words_;
    Focus focus_;
};
