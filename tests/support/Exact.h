#pragma once

#include <QByteArray>

/// A number as text that no other number has, for comparisons to the last bit: QCOMPARE takes
/// doubles that are merely close for equal.
inline QByteArray exact(double value)
{
    return QByteArray::number(value, 'g', 17);
}
