#pragma once

#include "shots/ShotStage.h"

#include <QList>
#include <QString>

/// One state of the program that has a picture.
struct Shot {
    /// Of its file, without look and ending.
    QString name;
    void (*set)(ShotStage&);
};

/// All of them, in the order in which a new user meets them.
const QList<Shot>& shots();
