#include "views/MusicWords.h"

#include "music/Beats.h"
#include "music/KeySignature.h"
#include "views/TimelineRuler.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>

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

bool isSame(double a, double b)
{
    return std::abs(a - b) < kTolerance;
}

} // namespace

QString MusicWords::note(int pitch)
{
    QString name = KeySignature::solfegeName(pitch);
    if (name.endsWith(u'#'))
        name = said(QT_TRANSLATE_NOOP("MusicWords", "%1 sostenido")).arg(name.chopped(1));
    const int octave = (pitch - (pitch % kSemitones + kSemitones) % kSemitones) / kSemitones - 1;
    return name + u' ' + QString::number(octave);
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
