#pragma once

#include <QtGlobal>

/// The nearest pitch in 0..127 of the same pitch class, moved by whole octaves.
constexpr int foldIntoMidiRange(qint64 pitch)
{
    if (pitch > 127)
        pitch -= 12 * ((pitch - 127 + 11) / 12);
    else if (pitch < 0)
        pitch += 12 * ((-pitch + 11) / 12);
    return static_cast<int>(pitch);
}
