#include "views/MusicWords.h"

#include "music/Beats.h"
#include "music/ChordNames.h"
#include "music/KeySignature.h"
#include "views/TimelineRuler.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr int kSemitones = 12;
constexpr double kDotted = 1.5;
constexpr double kTolerance = 1e-6;

struct NoteValue {
    double beats;
    const char* name;
    const char* dotted;
};

constexpr std::array kValues{
    NoteValue{4.0, QT_TRANSLATE_NOOP("MusicWords", "redonda"),
              QT_TRANSLATE_NOOP("MusicWords", "redonda con puntillo")},
    NoteValue{2.0, QT_TRANSLATE_NOOP("MusicWords", "blanca"),
              QT_TRANSLATE_NOOP("MusicWords", "blanca con puntillo")},
    NoteValue{1.0, QT_TRANSLATE_NOOP("MusicWords", "negra"),
              QT_TRANSLATE_NOOP("MusicWords", "negra con puntillo")},
    NoteValue{0.5, QT_TRANSLATE_NOOP("MusicWords", "corchea"),
              QT_TRANSLATE_NOOP("MusicWords", "corchea con puntillo")},
    NoteValue{0.25, QT_TRANSLATE_NOOP("MusicWords", "semicorchea"),
              QT_TRANSLATE_NOOP("MusicWords", "semicorchea con puntillo")}};

QString said(const char* text)
{
    return QCoreApplication::translate("MusicWords", text);
}

/// With two decimals at most.
QString number(double value)
{
    return QLocale().toString(std::round(value * 100.0) / 100.0, 'g',
                              QLocale::FloatingPointShortest);
}

/// The kinds of chords that there are in a key, as they are written and as they are said.
struct Quality {
    const char* written;
    const char* said;
};

constexpr std::array kQualities{
    Quality{"", QT_TRANSLATE_NOOP("MusicWords", "mayor")},
    Quality{"m", QT_TRANSLATE_NOOP("MusicWords", "menor")},
    Quality{"°", QT_TRANSLATE_NOOP("MusicWords", "disminuido")},
    Quality{"7", QT_TRANSLATE_NOOP("MusicWords", "séptima")},
    Quality{"maj7", QT_TRANSLATE_NOOP("MusicWords", "séptima mayor")},
    Quality{"m7", QT_TRANSLATE_NOOP("MusicWords", "menor séptima")},
    Quality{"m7♭5", QT_TRANSLATE_NOOP("MusicWords", "semidisminuido")},
    Quality{"9", QT_TRANSLATE_NOOP("MusicWords", "novena")},
    Quality{"maj9", QT_TRANSLATE_NOOP("MusicWords", "novena mayor")},
    Quality{"m9", QT_TRANSLATE_NOOP("MusicWords", "menor novena")},
    Quality{"m7♭9", QT_TRANSLATE_NOOP("MusicWords", "menor séptima con novena bemol")},
    Quality{"m7♭5♭9", QT_TRANSLATE_NOOP("MusicWords", "semidisminuido con novena bemol")}};

/// Without its octave.
QString pitchName(int pitch)
{
    const QString name = KeySignature::solfegeName(pitch);
    return name.endsWith(u'#')
               ? said(QT_TRANSLATE_NOOP("MusicWords", "%1 sostenido")).arg(name.chopped(1))
               : name;
}

bool isSame(double a, double b)
{
    return std::abs(a - b) < kTolerance;
}

} // namespace

QString MusicWords::note(int pitch)
{
    const int octave = (pitch - (pitch % kSemitones + kSemitones) % kSemitones) / kSemitones - 1;
    return pitchName(pitch) + u' ' + QString::number(octave);
}

QString MusicWords::chord(const KeySignature& key, int degree, ChordExtension extension)
{
    const QList<int> pitches = ChordVoicer::chordPitches(key, degree, extension);
    if (pitches.isEmpty())
        return {};
    const QString written = ChordNames::qualityOf(key, degree, extension);
    const auto quality = std::ranges::find_if(
        kQualities, [&](const Quality& one) { return written == QString::fromUtf8(one.written); });
    return pitchName(pitches.first()) + u' ' +
           (quality == kQualities.end() ? written : said(quality->said));
}

QString MusicWords::value(double beats)
{
    for (const NoteValue& value : kValues) {
        if (isSame(beats, value.beats))
            return said(value.name);
        if (isSame(beats, value.beats * kDotted))
            return said(value.dotted);
    }
    return said(QT_TRANSLATE_NOOP("MusicWords", "%1 negras")).arg(number(beats));
}

QString MusicWords::length(double beats, double beatsPerBar)
{
    const double bars = isBarLength(beatsPerBar) ? beats / beatsPerBar : 0.0;
    if (std::round(bars) < 1.0 || !isSame(bars, std::round(bars)))
        return value(beats);
    if (isSame(bars, 1.0))
        return said(QT_TRANSLATE_NOOP("MusicWords", "1 compás"));
    return said(QT_TRANSLATE_NOOP("MusicWords", "%1 compases")).arg(number(std::round(bars)));
}

QString MusicWords::bar(double beat, double beatsPerBar)
{
    const auto bar = barAt(beat + kTolerance, beatsPerBar);
    return bar ? said(QT_TRANSLATE_NOOP("MusicWords", "compás %1")).arg(qint64{*bar} + 1)
               : QString();
}

QString MusicWords::place(double beat, const TimeSignature& meter)
{
    const double beatsPerBar = meter.beatsPerBar();
    const auto bar = barAt(beat + kTolerance, beatsPerBar);
    if (!bar)
        return {};
    const double pulse = (beat - *bar * beatsPerBar) / meter.pulseBeats() + 1.0;
    return said(QT_TRANSLATE_NOOP("MusicWords", "compás %1, pulso %2"))
        .arg(QString::number(qint64{*bar} + 1), number(pulse));
}

QString MusicWords::key(const KeySignature& key)
{
    const auto words = [&](const char* pattern) {
        return said(pattern).arg(KeySignature::solfegeName(key.rootPitchClass));
    };
    switch (key.mode) {
    case KeyMode::Minor:
        return words(QT_TRANSLATE_NOOP("MusicWords", "%1 menor"));
    case KeyMode::Dorian:
        return words(QT_TRANSLATE_NOOP("MusicWords", "%1 dórico"));
    case KeyMode::Lydian:
        return words(QT_TRANSLATE_NOOP("MusicWords", "%1 lidio"));
    case KeyMode::Major:
        break;
    }
    return words(QT_TRANSLATE_NOOP("MusicWords", "%1 mayor"));
}

QString MusicWords::list(const QStringList& words)
{
    QStringList said = words;
    said.removeAll(QString());
    return said.join(u", ");
}
