#pragma once

#include "views/Announcements.h"

#include <QAccessible>
#include <QStringList>

#include <utility>

/// Somebody who hears of the screen what they cannot see: as long as it lives the program tells.
class ScreenListener {
public:
    ScreenListener()
    {
        heard_.clear();
        Announcements::tellTo(hear);
    }

    ~ScreenListener() { Announcements::tellTo({}); }

    ScreenListener(const ScreenListener&) = delete;
    ScreenListener& operator=(const ScreenListener&) = delete;

    /// "focus Name" and "value Name: words" for what was told since the last call, in its order.
    static QStringList heard() { return std::exchange(heard_, {}); }

    /// The names of what lies in a part of the screen.
    static QStringList namesIn(QObject* widget)
    {
        QStringList names;
        const QAccessibleInterface* part = QAccessible::queryAccessibleInterface(widget);
        for (int i = 0; part && i < part->childCount(); ++i)
            names.append(part->child(i)->text(QAccessible::Name));
        return names;
    }

private:
    static void hear(QAccessibleEvent& event)
    {
        QAccessibleInterface* part = event.accessibleInterface();
        if (!part || !part->isValid())
            return;
        const QString name = part->text(QAccessible::Name);
        if (event.type() == QAccessible::Focus)
            heard_.append("focus " + name);
        else if (event.type() == QAccessible::ValueChanged && part->valueInterface() &&
                 part->role() == QAccessible::Slider)
            heard_.append("value " + name + ": " + part->text(QAccessible::Value));
    }

    inline static QStringList heard_;
};
