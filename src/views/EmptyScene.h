#pragma once

#include <QCoreApplication>
#include <QGraphicsScene>

/// Takes every item out of a scene that is about to be filled anew, in a time that grows with their
/// number alone.
inline void emptyScene(QGraphicsScene& scene)
{
    // Items that were never painted wait in a list, in which each one that goes is searched for.
    // Where none is, nothing is posted, and nothing painted before its time.
    QCoreApplication::sendPostedEvents(&scene, QEvent::MetaCall);
    // Once for all: item by item, views would take longer to learn of the change than to paint it.
    scene.update();
    scene.clear();
}
