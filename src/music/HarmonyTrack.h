#pragma once

#include "music/ChordVoicer.h"

#include <QList>

/// One chord inside a bar. An event whose degree is outside 1..7 holds no chord.
struct HarmonyDegreeEvent {
    qint32 degree = 1;
    ChordExtension extension = ChordExtension::Triad;
    /// Beats from the start of the bar.
    double startBeat = 0.0;
    /// Beats.
    double durationBeats = 1.0;

    /// Whether the chord is in force at a beat counted from the start of its bar. At a shared
    /// boundary the later chord is.
    bool covers(double beatInBar) const;

    double endBeat() const { return startBeat + durationBeats; }

    friend bool operator==(const HarmonyDegreeEvent&, const HarmonyDegreeEvent&) = default;
};

/// The chords of one bar.
struct HarmonyBlock {
    /// From 0.
    qint32 barIndex = 0;
    QList<HarmonyDegreeEvent> events;

    friend bool operator==(const HarmonyBlock&, const HarmonyBlock&) = default;
};

/// The chord lane of a song.
///
/// Chords are stored by bar, but callers speak in absolute beats and say how long a bar is; a
/// change of meter therefore reads the stored bars at the new length. Editing keeps the blocks
/// in ascending order with one block a bar, and the events of a block in order, apart and inside
/// the bar. Reading takes any content and finds the first match. With a bar length that is not
/// positive and finite, reading finds nothing and editing does nothing.
///
/// Pointers into the track live until its next change.
struct HarmonyTrack {
    /// What is left of a cut chord below this length, in beats, is dropped.
    static constexpr double kShortestRemainder = 1e-6;

    /// Silences the chords themselves; loops go on following them.
    bool muted = false;
    float volume = 0.7F;
    QList<HarmonyBlock> blocks;

    /// True when no block holds an event.
    bool isEmpty() const;

    /// The first block of a bar, or null.
    const HarmonyBlock* blockForBar(qint32 bar) const;

    /// The chord in force at an absolute beat, or null. A chord does not carry into a bar that
    /// has none.
    const HarmonyDegreeEvent* eventAt(double beat, double beatsPerBar) const;

    /// The block of a bar, made in its place if there is none.
    HarmonyBlock& ensureBlockForBar(qint32 bar);

    /// Lays a chord at an absolute beat, cut at the bar line. A chord that it starts inside is
    /// cut short there; chords that start under it go.
    void insertEvent(double startBeat, double durationBeats, int degree, ChordExtension extension,
                     double beatsPerBar);

    /// Lays a chord at an absolute beat, on over bar lines as one chord in each bar. Of the chords
    /// that lie there what is left before and behind it stays. False, with nothing laid, where
    /// there are no such bars.
    bool overlayEvent(double startBeat, double durationBeats, int degree, ChordExtension extension,
                      double beatsPerBar);

    /// Removes the chords in force at an absolute beat, then every empty block.
    void removeEventAt(double beat, double beatsPerBar);

    void removeEmptyBlocks();

    friend bool operator==(const HarmonyTrack&, const HarmonyTrack&) = default;
};
