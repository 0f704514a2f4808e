#pragma once

#include "music/TimeSignature.h"

#include <QString>

#include <array>

/// The meters that a work can be given.
inline constexpr std::array<TimeSignature, 4> kOfferedMeters{
    {{.numerator = 4, .denominator = 4, .isCompound = false},
     {.numerator = 3, .denominator = 4, .isCompound = false},
     {.numerator = 2, .denominator = 4, .isCompound = false},
     {.numerator = 6, .denominator = 8, .isCompound = true}}};

/// "6/8".
inline QString meterText(const TimeSignature& meter)
{
    return QString::number(meter.numerator) + u'/' + QString::number(meter.denominator);
}
