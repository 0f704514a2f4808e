#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "listen/RhythmDemo.h"
#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "support/Files.h"

#include <QSet>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr int kChords = 4;

/// Pitches of the notes that start in one of the stretches of equal length, one for each chord.
QSet<int> pitchesIn(const QList<NoteEvent>& notes, int stretch, double beats)
{
    QSet<int> pitches;
    for (const NoteEvent& note : notes) {
        if (note.startBeat > stretch * beats - 1e-6 &&
            note.startBeat < (stretch + 1) * beats - 1e-6)
            pitches.insert(note.pitch);
    }
    return pitches;
}

QSet<int> classesOf(const QSet<int>& pitches)
{
    QSet<int> classes;
    for (const int pitch : pitches)
        classes.insert(pitch % 12);
    return classes;
}

/// Pitch classes moved up by steps of a scale; empty if one of them is not in it.
QSet<int> moved(const QSet<int>& classes, const QList<int>& scale, int steps)
{
    QSet<int> result;
    for (const int pitchClass : classes) {
        const qsizetype step = scale.indexOf(pitchClass);
        if (step < 0)
            return {};
        result.insert(scale.at((step + steps) % scale.size()));
    }
    return result;
}

/// Pitch classes moved as far as the root of the chord.
QSet<int> movedWithTheRoot(const QSet<int>& classes, const QList<int>& scale, int steps)
{
    QSet<int> result;
    for (const int pitchClass : classes)
        result.insert((pitchClass + scale.at(steps) - scale.first() + 12) % 12);
    return result;
}

bool hasBlackKeys(const LoopVariant& variant)
{
    return std::ranges::any_of(variant.notes, [](const NoteEvent& note) {
        return KeySignature().degreeOfPitchClass(note.pitch) == 0;
    });
}

} // namespace

/// Every loop of the library over i iv v i: what is pitched walks along the scale with the chords,
/// and what is struck stays.
class FollowingTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void loopsFollowTheChordsInEveryMode_data();
    void loopsFollowTheChordsInEveryMode();

private:
    void checkTrack(const Project& song, const Track& track, double beats);

    QTemporaryDir folder_;
    std::unique_ptr<InstrumentLibrary> instruments_;
    std::unique_ptr<LoopLibrary> library_;
};

void FollowingTest::initTestCase()
{
    QVERIFY(copyFiles(VELTA_LOOPS_DIR "/installed", folder_.filePath("installed")));
    QVERIFY(copyFiles(VELTA_SERVED_DIR "/content", folder_.filePath("installed")));
    instruments_ = std::make_unique<InstrumentLibrary>(QString());
    library_ = std::make_unique<LoopLibrary>(folder_.path(), instruments_.get());
    library_->reload();
    QVERIFY(library_->rhythms().size() == 36);
}

void FollowingTest::loopsFollowTheChordsInEveryMode_data()
{
    QTest::addColumn<QString>("rhythmId");
    QTest::addColumn<int>("mode");
    const QStringList modes{"Major", "Minor", "Dorian", "Lydian"};
    for (const Rhythm& rhythm : library_->rhythms()) {
        for (int mode = 0; mode < modes.size(); ++mode)
            QTest::addRow("%s, %s", qPrintable(rhythm.id), qPrintable(modes.at(mode)))
                << rhythm.id << mode;
    }
}

void FollowingTest::checkTrack(const Project& song, const Track& track, double beats)
{
    const QList<NoteEvent> notes = PlaybackEngine::renderTrackNotes(song, track, library_.get());
    const QString name = track.layerId + ' ' + loopSectionToString(track.loopBlocks[0].section) +
                         QString::number(track.loopBlocks[0].variantIndex);
    const QSet<int> written = pitchesIn(notes, 0, beats);
    QVERIFY2(!written.isEmpty(), qPrintable(name));
    const QList<int> scale = song.keySignature.scalePitchClasses();
    const bool pitched = library_->findLayer(track.layerId)->pitched;
    const LoopBlock& block = track.loopBlocks[0];
    const bool chromatic =
        hasBlackKeys(*library_->findVariant(track.layerId, block.section, block.variantIndex));
    const QList<int> stepsOf{0, 3, 4, 0};
    for (int chord = 1; chord < kChords; ++chord) {
        const QSet<int> heard = pitchesIn(notes, chord, beats);
        if (pitched && chromatic) {
            // What is white walks along the scale, what is black goes with the root.
            const QSet<int> classes = classesOf(written);
            QSet<int> either = movedWithTheRoot(classes, scale, stepsOf[chord]);
            for (const int pitchClass : classes) {
                if (scale.contains(pitchClass))
                    either.unite(moved({pitchClass}, scale, stepsOf[chord]));
            }
            QVERIFY2(!heard.isEmpty() && either.contains(classesOf(heard)), qPrintable(name));
        } else if (pitched)
            QVERIFY2(classesOf(heard) == moved(classesOf(written), scale, stepsOf[chord]),
                     qPrintable(name));
        else
            QVERIFY2(heard == written, qPrintable(name));
    }
}

void FollowingTest::loopsFollowTheChordsInEveryMode()
{
    QFETCH(QString, rhythmId);
    QFETCH(int, mode);
    const Rhythm rhythm = *library_->findRhythm(rhythmId);
    for (const RhythmDemo::Loop& loop : RhythmDemo::loopsOf(*library_, rhythmId)) {
        const auto song = RhythmDemo::song(*library_, rhythm, loop);
        song->keySignature.mode = static_cast<KeyMode>(mode);
        const double beats = loop.bars * song->beatsPerBar();
        for (Track& track : song->tracks) {
            track.humanize.enabled = false;
            checkTrack(*song, track, beats);
            if (QTest::currentTestFailed())
                return;
        }
    }
}

QTEST_GUILESS_MAIN(FollowingTest)
#include "FollowingTest.moc"
