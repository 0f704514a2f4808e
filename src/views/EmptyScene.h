#pragma once

#include <QCoreApplication>
#include <QGraphicsScene>

/// Takes every item out of a scene that is about to be filled anew, in a time that grows with their
/// number alone.
inline void emptyScene(QGraphicsScene& scene)
{
    // Once for all: item by item, views would take longer to learn of the change than to paint it.
    scene.update();
    // Items that were never painted wait in a list, in which each one that goes is searched for.
    QCoreApplication::sendPostedEvents(&scene, QEvent::MetaCall);
    scene.clear();
}
