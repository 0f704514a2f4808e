#pragma once

/// Who plays on which synthesiser channel, alike in live playback and in the offline mix: the
/// tracks of a project have the channels from 0 on, in order.
inline constexpr int kPreviewChannel = 13;
inline constexpr int kMetronomeChannel = 14;
inline constexpr int kHarmonyChannel = 15;

/// General MIDI program of the chords: the piano.
inline constexpr int kHarmonyProgram = 0;
