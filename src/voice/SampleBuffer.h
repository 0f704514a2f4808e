#pragma once

#include <QList>

/// `count` samples of silence, or an empty list where memory does not hold that many.
QList<float> silentSamples(qint64 count);
