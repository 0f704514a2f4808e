#pragma once

#include <QEvent>
#include <QObject>

/// Counts the times that a widget is told of a change of its style.
class StyleChanges : public QObject {
public:
    explicit StyleChanges(QObject* watched) { watched->installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::StyleChange;
        return false;
    }

    int count = 0;
};
