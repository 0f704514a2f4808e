#pragma once

#include "music/NoteEvent.h"
#include "music/TimeSignature.h"
#include "records/Fields.h"

/// The fields of the musical records that works and content packages are both made of.
namespace Records {

template <>
inline constexpr auto kFields<NoteEvent> = FieldList{
    Field{QLatin1StringView("durationBeats"), &NoteEvent::durationBeats},
    Field{QLatin1StringView("pitch"), &NoteEvent::pitch},
    Field{QLatin1StringView("startBeat"), &NoteEvent::startBeat},
    Field{QLatin1StringView("velocity"), &NoteEvent::velocity},
};

template <>
inline constexpr auto kFields<TimeSignature> = FieldList{
    Field{QLatin1StringView("denominator"), &TimeSignature::denominator},
    Field{QLatin1StringView("isCompound"), &TimeSignature::isCompound},
    Field{QLatin1StringView("numerator"), &TimeSignature::numerator},
};

} // namespace Records
