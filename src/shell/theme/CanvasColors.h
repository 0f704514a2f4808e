#pragma once

#include "shell/theme/ThemeManager.h"

#include <QColor>

#include <array>

/// The palette of the views that paint by hand: one record for each theme.
struct CanvasColors {
    // The piano roll, and its notes.
    QColor canvasBackground;
    /// Lies over the rows of pitches outside the key.
    QColor outOfScaleFill;
    /// Between rows, and the base of hatchings.
    QColor rowLine;
    QColor subdivisionLine;
    QColor beatLine;
    QColor barLine;
    QColor noteFill;
    QColor noteOutline;
    QColor noteSelected;
    QColor playhead;

    // The piano keyboard.
    QColor keyWhite;
    QColor keyBlack;
    QColor keyLine;
    /// Names on the white keys.
    QColor keyText;

    // The arranger and its left column.
    QColor arrangerBackground;
    QColor laneOdd;
    QColor laneEven;
    QColor laneHarmony;
    QColor laneSeparator;
    QColor headerBackground;
    QColor headerText;

    QColor rulerTick;

    bool operator==(const CanvasColors&) const = default;
};

inline constexpr CanvasColors kLightCanvas = {
    .canvasBackground = {0xfa, 0xfb, 0xf7},
    .outOfScaleFill = {0, 0, 0, 14},
    .rowLine = {0, 0, 0, 24},
    .subdivisionLine = {0, 0, 0, 26},
    .beatLine = {0, 0, 0, 70},
    .barLine = {0, 0, 0, 150},
    .noteFill = {0x7c, 0xb3, 0x42},
    .noteOutline = {0x2e, 0x52, 0x14},
    .noteSelected = {0x9c, 0xcc, 0x65},
    .playhead = {0x4a, 0x73, 0x25},
    .keyWhite = {0xff, 0xff, 0xff},
    .keyBlack = {0x30, 0x30, 0x30},
    .keyLine = {0xc0, 0xc0, 0xc0},
    .keyText = {0x60, 0x60, 0x60},
    .arrangerBackground = {0xef, 0xf3, 0xe9},
    .laneOdd = {0xeb, 0xf0, 0xe4},
    .laneEven = {0xf5, 0xf8, 0xf1},
    .laneHarmony = {0xe4, 0xec, 0xd7},
    .laneSeparator = {0, 0, 0, 40},
    .headerBackground = {0xe0, 0xe8, 0xd4},
    .headerText = {0x2e, 0x52, 0x14},
    .rulerTick = {0x4a, 0x73, 0x25, 90},
};

inline constexpr CanvasColors kDarkCanvas = {
    .canvasBackground = {0x15, 0x1a, 0x0f},
    .outOfScaleFill = {0, 0, 0, 70},
    .rowLine = {0xff, 0xff, 0xff, 22},
    .subdivisionLine = {0xff, 0xff, 0xff, 24},
    .beatLine = {0xff, 0xff, 0xff, 60},
    .barLine = {0xff, 0xff, 0xff, 130},
    .noteFill = {0x7c, 0xb3, 0x42},
    .noteOutline = {0xdc, 0xed, 0xc8},
    .noteSelected = {0xdc, 0xed, 0xc8},
    .playhead = {0x9c, 0xcc, 0x65},
    .keyWhite = {0xe6, 0xea, 0xe0},
    .keyBlack = {0x1a, 0x1a, 0x1a},
    .keyLine = {0x96, 0x9e, 0x8c},
    .keyText = {0x4c, 0x52, 0x44},
    .arrangerBackground = {0x11, 0x16, 0x0b},
    .laneOdd = {0x1b, 0x21, 0x13},
    .laneEven = {0x14, 0x19, 0x0e},
    .laneHarmony = {0x25, 0x30, 0x16},
    .laneSeparator = {0xff, 0xff, 0xff, 36},
    .headerBackground = {0x14, 0x19, 0x0c},
    .headerText = {0xc9, 0xe0, 0xb0},
    .rulerTick = {0x9c, 0xcc, 0x65, 120},
};

/// The palette of the theme in force. Painting asks for it anew each time, so that a change of
/// theme needs no more than a repaint.
const CanvasColors& canvasColors();

// What keeps its colour when the theme changes.

/// The rows of the active lane and of sections.
inline constexpr QColor kLaneSelected = ThemeManager::kAccentDeep;
/// Selected lanes other than the active one.
inline constexpr QColor kLaneSelectedAlt{0x55, 0x84, 0x2a};
/// The outline of a selected block.
inline constexpr QColor kVeltaAccent = ThemeManager::kAccent;
inline constexpr QColor kMelodyBlock{0x4a, 0x73, 0x25};
inline constexpr QColor kLoopBlock{0x00, 0x69, 0x5c};
/// Audio clips, and a mute button that is on.
inline constexpr QColor kAudioBlock{0xc2, 0x18, 0x5b};

/// The playhead while a voice is recorded.
inline constexpr QColor kRecordingPlayhead{0xe5, 0x39, 0x35};

/// Chords, by degree: I first.
inline constexpr std::array<QColor, 7> kDegreeColors = {{
    {0xe5, 0x39, 0x35},
    {0xf9, 0xa8, 0x25},
    {0xfd, 0xd8, 0x35},
    {0x43, 0xa0, 0x47},
    {0x1e, 0x88, 0xe5},
    {0x5e, 0x35, 0xb1},
    {0x8d, 0x6e, 0x63},
}};

/// Tracks whose notes show through in the piano roll, in turn.
inline constexpr std::array<QColor, 6> kTrackColors = {{
    {0x1e, 0x88, 0xe5},
    {0x43, 0xa0, 0x47},
    {0xf9, 0xa8, 0x25},
    {0xe5, 0x39, 0x35},
    {0x00, 0x89, 0x7b},
    {0x8d, 0x6e, 0x63},
}};
