#pragma once

#include "listen/Loudness.h"

#include <QList>
#include <QString>

#include <optional>

/// One layer of a loop, rendered alone.
struct RenderedLayer {
    QString label;
    /// Relative to the page.
    QString sound;
    Loudness loudness;
};

/// A loop that was rendered.
struct RenderedLoop {
    /// Section and number, as the author reads them.
    QString title;
    /// Relative to the page.
    QString sound;
    QString picture;
    double seconds = 0.0;
    Loudness loudness;
    /// Empty where only the mix was asked for.
    QList<RenderedLayer> layers;
};

/// A whole song of a rhythm; paths are relative to the page.
struct RenderedSong {
    QString wav;
    QString mp3;
    /// The work that Velta opens.
    QString projectFolder;
    QString picture;
    double seconds = 0.0;
    Loudness loudness;
};

/// How loud a layer, or what plays one role in a drum kit, is in the mix.
struct LevelInMix {
    QString layer;
    /// In the words of the sources.
    QString role;
    /// Decibels above the bass, and those that the role asks for.
    double aboveBassDb = 0.0;
    double targetDb = 0.0;
    /// Whether it lies so far from its target that it should be mended.
    bool off = false;
};

struct RenderedRhythm {
    /// Name, meter and tempo.
    QString title;
    /// What its groove comes to; see heardGroove(). Empty where it has none.
    QString groove = {};
    /// None where only some loops were asked for.
    std::optional<RenderedSong> song = std::nullopt;
    QList<RenderedLoop> loops;
    /// Of the everyday form; empty where it was not measured.
    QList<LevelInMix> levels = {};
};

/// A page in HTML on which the whole library is heard and seen at once.
QString listenPage(const QList<RenderedRhythm>& rhythms);
