#include "playback/NoteRenderer.h"

#include "music/ChordMapper.h"
#include "music/ChordVoicer.h"
#include "music/Humanizer.h"
#include "support/ContentFixture.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace NoteRendererTests {

using namespace ProjectBuilder;

namespace {

constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr double kMaxDouble = std::numeric_limits<double>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Notes = QList<NoteEvent>;

Rhythm rhythm(const QString& id, int numerator, int denominator)
{
    Rhythm result;
    result.id = id;
    result.timeSignature = {.numerator = numerator, .denominator = denominator};
    return result;
}

LoopLayer layer(const QString& id, bool pitched = true)
{
    LoopLayer result;
    result.id = id;
    result.pitched = pitched;
    return result;
}

LoopVariant variant(const QString& layerId, const Notes& notes, int bars = 1, int index = 1,
                    LoopSection section = LoopSection::Normal)
{
    return {.layerId = layerId,
            .section = section,
            .variantIndex = index,
            .notes = notes,
            .durationBars = bars};
}

/// A library of one rhythm with one layer, "l", and its variants.
class SmallLibrary : public ContentFixture {
public:
    SmallLibrary(const Rhythm& rhythm, const QList<LoopVariant>& variants, bool pitched = true)
    {
        addPackage(QStringLiteral("a"), packageText(rhythm, {layer("l", pitched)}, variants));
        library().reload();
    }

    /// One bar of 4/4 in the rhythm "r".
    explicit SmallLibrary(const Notes& notes, int bars = 1, bool pitched = true)
        : SmallLibrary(rhythm("r", 4, 4), {variant("l", notes, bars)}, pitched)
    {}
};

/// The notes of a straight track of loops in a 4/4 project in C Major.
Notes loopNotes(SmallLibrary& content, const QList<LoopBlock>& blocks,
                const HarmonyTrack& chords = {})
{
    const Track track = straight(loopTrack(blocks));
    return NoteRenderer::trackNotes(*project({track}, chords), track, &content.library());
}

QList<int> pitches(const Notes& notes)
{
    QList<int> result;
    for (const NoteEvent& note : notes)
        result.append(note.pitch);
    return result;
}

QList<double> starts(const Notes& notes)
{
    QList<double> result;
    for (const NoteEvent& note : notes)
        result.append(note.startBeat);
    return result;
}

/// A list in one order, whatever order its ties had.
Notes settled(Notes notes)
{
    const auto key = [](const NoteEvent& note) {
        return std::tuple(note.startBeat, note.pitch, note.durationBeats, note.velocity);
    };
    std::sort(notes.begin(), notes.end(),
              [&](const NoteEvent& a, const NoteEvent& b) { return key(a) < key(b); });
    return notes;
}

bool isSorted(const Notes& notes)
{
    return std::ranges::is_sorted(notes, {}, &NoteEvent::startBeat);
}

// ---- The rule in its plainest form ---------------------------------------------------------

int plainPitch(const Project& song, const LoopLayer* layer, int pitch, double beat, double bar)
{
    if (layer && !layer->pitched)
        return pitch;
    const HarmonyDegreeEvent* chord = song.harmonyTrack.eventAt(beat, bar);
    return chord ? ChordMapper::mapPitch(pitch, song.keySignature, chord->degree)
                 : ChordMapper::transposeToKey(pitch, song.keySignature);
}

Notes plainLoopNotes(const Project& song, const LoopBlock& block, const LoopLibrary& library,
                     double bar)
{
    Notes notes;
    const LoopVariant* variant =
        library.findVariant(block.layerId, block.section, block.variantIndex);
    if (!variant || variant->notes.isEmpty())
        return notes;
    const Rhythm* rhythm = library.findRhythm(block.rhythmId);
    const LoopLayer* layer = library.findLayer(block.layerId);
    const double rhythmBar =
        rhythm ? rhythm->timeSignature.numerator * 4.0 / rhythm->timeSignature.denominator : bar;
    const double cycle = variant->durationBars * rhythmBar;
    if (cycle <= 0)
        return notes;
    const double length = block.durationBeats;
    for (double offset = 0.0; offset < length - 1e-9; offset += cycle) {
        for (const NoteEvent& note : variant->notes) {
            const double t = note.startBeat + offset;
            if (t >= length - 1e-9)
                continue;
            notes.append({.pitch = plainPitch(song, layer, note.pitch, block.startBeat + t, bar),
                          .startBeat = block.startBeat + t,
                          .durationBeats = std::min(note.durationBeats, length - t),
                          .velocity = note.velocity});
        }
    }
    return notes;
}

Notes plainTrackNotes(const Project& song, const Track& track, const LoopLibrary* library)
{
    const double bar = song.timeSignature.numerator * 4.0 / song.timeSignature.denominator;
    Notes melody;
    for (const MelodyBlock& block : track.melodyBlocks) {
        for (NoteEvent note : block.notes) {
            if (note.startBeat < block.durationBeats) {
                note.startBeat = block.startBeat + note.startBeat;
                melody.append(note);
            }
        }
    }
    Notes notes = Humanizer::apply(melody, track.humanize, nullptr, bar);
    if (!library)
        return notes;
    for (const LoopBlock& block : track.loopBlocks)
        notes += Humanizer::apply(plainLoopNotes(song, block, *library, bar), track.humanize,
                                  library->grooveForRhythm(block.rhythmId), bar);
    return notes;
}

// ---- Generated content ---------------------------------------------------------------------

/// Draws content whose ids meet by chance.
class ContentDraw {
public:
    explicit ContentDraw(quint32 seed) : random_(seed), generator_(seed) {}

    void addTo(ContentFixture& content)
    {
        for (int i = 0; i < 3; ++i) {
            Rhythm rhythm;
            rhythm.id = id("r");
            rhythm.timeSignature = generator_.meter();
            QList<LoopVariant> variants;
            for (int j = 0; j < 8; ++j)
                variants.append(drawnVariant());
            content.addPackage(QString::number(i),
                               packageText(rhythm,
                                           {layer(id("l"), random_.bounded(2) == 0),
                                            layer(id("l"), random_.bounded(2) == 0)},
                                           variants));
            content.addGroove(QString::number(i), grooveText());
        }
        content.library().reload();
    }

    /// Lets the loop blocks of a project name this content, most of the time.
    void pointTracksHere(Project& song)
    {
        for (Track& track : song.tracks) {
            for (LoopBlock& block : track.loopBlocks) {
                block.rhythmId = id("r");
                block.layerId = id("l");
                block.section = section();
                block.variantIndex = random_.bounded(1, 3);
            }
        }
    }

private:
    QString id(const char* prefix) { return prefix + QString::number(random_.bounded(3)); }

    LoopSection section()
    {
        return random_.bounded(2) == 0 ? LoopSection::Normal : LoopSection::Final;
    }

    LoopVariant drawnVariant()
    {
        // Around the tolerances, where chords change and blocks end.
        static const QList<double> kNudges{0.0,   0.0,   0.0,  1e-10, -1e-10,
                                           5e-10, -5e-9, 2e-9, -1e-6, -0.007};
        Notes notes;
        for (int i = random_.bounded(9); i > 0; --i) {
            notes.append(generator_.note());
            notes.last().startBeat = random_.bounded(-2, 40) / 4.0 + kNudges[random_.bounded(10)];
        }
        return variant(id("l"), notes, random_.bounded(-1, 4), random_.bounded(1, 3), section());
    }

    QByteArray grooveText()
    {
        QJsonArray offsets;
        for (int i = random_.bounded(6); i > 0; --i)
            offsets.append(QJsonObject{{"position", random_.bounded(32) / 8.0},
                                       {"timingOffsetBeats", random_.generateDouble() - 0.5},
                                       {"velocityOffset", random_.bounded(-40, 40)}});
        return QJsonDocument(QJsonObject{{"rhythmId", id("r")}, {"offsets", offsets}}).toJson();
    }

    QRandomGenerator random_;
    Generator generator_;
};

} // namespace

class NoteRendererTest : public QObject {
    Q_OBJECT

private slots:
    void trackWithoutBlocksGivesNothing();

    void melodyNotesCountFromTheirBlock();
    void melodyNoteIsHiddenBehindItsBlock_data();
    void melodyNoteIsHiddenBehindItsBlock();
    void melodyNoteMayRingPastItsBlock();
    void overlappingMelodyBlocksAllSound();
    void melodyBlocksAreHumanizedAsOneList();
    void melodyKnowsNoGroove();
    void muteAndSoloAreNotLookedAt();

    void withoutALibraryOnlyTheMelodySounds();
    void contentThatIsNotThereYieldsNothing_data();
    void contentThatIsNotThereYieldsNothing();
    void uninstalledContentYieldsNothing();
    void shortBlockCutsItsVariant();
    void longBlockRepeatsItsVariant();
    void blockOfWholeCyclesRepeatsWithoutARemainder();
    void noteAtTheEndOfTheBlock_data();
    void noteAtTheEndOfTheBlock();
    void repetitionStartsAtTheBlock();
    void notesOutOfOrderAreAllLookedAt();
    void notesPastTheCycleSoundInEveryPass();
    void noteBeforeTheLoopSoundsBeforeTheBlock();
    void noPassStartsWithinTheToleranceOfTheEnd();
    void cycleIsCountedInBarsOfTheRhythm_data();
    void cycleIsCountedInBarsOfTheRhythm();
    void missingRhythmTakesTheProjectsBar();
    void cycleWithoutLengthYieldsNothing_data();
    void cycleWithoutLengthYieldsNothing();
    void blockWithoutLengthYieldsNothing_data();
    void blockWithoutLengthYieldsNothing();
    void variantWithoutNotesEndsAtOnce();
    void overlappingLoopBlocksAllSound();

    void chordIsLookedUpForEveryNote();
    void chordMayChangeInsideABar();
    void noteNearAChangeOfChord_data();
    void noteNearAChangeOfChord();
    void ringingNoteKeepsThePitchOfItsStart();
    void withoutAChordTheLoopOnlyMovesIntoTheKey();
    void degreeThatIsNoneOnlyMovesIntoTheKey_data();
    void degreeThatIsNoneOnlyMovesIntoTheKey();
    void mutedHarmonyIsStillFollowed();
    void drumLayerKeepsItsPitches();
    void missingLayerFollowsTheChords();
    void threeFourRhythmFollowsTheBarsOfAFourFourProject();

    void eachLoopBlockIsHumanizedByItself();
    void equalLoopBlocksGetTheSameJitter();
    void grooveOfTheRhythmPullsLoops();
    void grooveIsTakenByTheRhythmOfTheBlock();
    void grooveStandsInTheBarOfTheProject();
    void grooveNeedsHumanizing();
    void cutComesBeforeHumanizing();
    void melodyAndLoopsAreSortedTogether();

    void chordsBecomeNotes_data();
    void chordsBecomeNotes();
    void chordsStandInTheirBars();
    void chordsAreSorted();
    void chordsAreNotHumanizedNorMuted();
    void degreeThatIsNoneSoundsNoChord();

    void rendererAgreesWithItsPlainForm();
    void equalProjectsSoundEqual();
    void renderedNotesAreSortedAndFinite();

    void lastNoteWithinTheBoundIsRendered();
    void boundCutsTheTrack_data();
    void boundCutsTheTrack();
    void boundCountsAllBlocksOfATrack();
    void variantBeyondTheBoundYieldsNothing();
    void nobodyNeedsToHearOfTheCut();
    void notesWithoutAPlaceAreLeftOut_data();
    void notesWithoutAPlaceAreLeftOut();
    void grooveCannotThrowANoteOutOfTheNumbers();
    void meterWithoutABarLeavesTheRest_data();
    void meterWithoutABarLeavesTheRest();
    void chordWithoutAPlaceIsLeftOut();
    void hostileProjectsAreRendered();
};

void NoteRendererTest::trackWithoutBlocksGivesNothing()
{
    SmallLibrary content({note(60, 0.0)});
    QVERIFY(NoteRenderer::trackNotes(*project(), Track(), &content.library()).isEmpty());
    QVERIFY(NoteRenderer::trackNotes(*project(), Track(), nullptr).isEmpty());
    QVERIFY(NoteRenderer::harmonyNotes(*project()).isEmpty());
}

// ---- Melodies ------------------------------------------------------------------------------

void NoteRendererTest::melodyNotesCountFromTheirBlock()
{
    const Track track =
        straight(melodyTrack({melody({note(60, 0.5, 0.25, 90), note(64, 3.0, 1.0, 1)}, 8.0),
                              melody({note(72, 0.0, 4.0, 127)}, 1.5)}));
    QCOMPARE(NoteRenderer::trackNotes(*project({track}), track, nullptr),
             (Notes{note(72, 1.5, 4.0, 127), note(60, 8.5, 0.25, 90), note(64, 11.0, 1.0, 1)}));
}

void NoteRendererTest::melodyNoteIsHiddenBehindItsBlock_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("blockLength");
    QTest::addColumn<bool>("sounds");
    QTest::newRow("exactly at the end is hidden") << 4.0 << 4.0 << false;
    QTest::newRow("1e-10 before the end sounds") << 4.0 - 1e-10 << 4.0 << true;
    QTest::newRow("1e-10 behind the end is hidden") << 4.0 + 1e-10 << 4.0 << false;
    QTest::newRow("far behind is hidden") << 40.0 << 4.0 << false;
    QTest::newRow("before the start of the block sounds") << -1.0 << 4.0 << true;
    QTest::newRow("in a block without length is hidden") << 0.0 << 0.0 << false;
    QTest::newRow("in a block of negative length is hidden") << 0.0 << -4.0 << false;
    QTest::newRow("in a block whose length is no number is hidden") << 0.0 << kNaN << false;
}

void NoteRendererTest::melodyNoteIsHiddenBehindItsBlock()
{
    QFETCH(double, start);
    QFETCH(double, blockLength);
    QFETCH(bool, sounds);
    const Track track = straight(melodyTrack({melody({note(60, start)}, 16.0, blockLength)}));
    const Notes notes = NoteRenderer::trackNotes(*project({track}), track, nullptr);
    QCOMPARE(notes, sounds ? Notes{note(60, 16.0 + start)} : Notes());
}

void NoteRendererTest::melodyNoteMayRingPastItsBlock()
{
    const Track track = straight(melodyTrack({melody({note(60, 3.5, 10.0)})}));
    QCOMPARE(NoteRenderer::trackNotes(*project({track}), track, nullptr),
             Notes{note(60, 3.5, 10.0)});
}

void NoteRendererTest::overlappingMelodyBlocksAllSound()
{
    const Track track =
        straight(melodyTrack({melody({note(60, 1.0)}, 0.0), melody({note(60, 1.0)}, 0.0),
                              melody({note(62, 0.0)}, 0.5)}));
    QCOMPARE(NoteRenderer::trackNotes(*project({track}), track, nullptr),
             (Notes{note(62, 0.5), note(60, 1.0), note(60, 1.0)}));
}

void NoteRendererTest::melodyBlocksAreHumanizedAsOneList()
{
    Track track = melodyTrack({melody(notesInARow({60, 62}), 4.0), melody(notesInARow({64}), 0.0)});
    track.humanize = {.enabled = true, .intensity = 1.0F, .seed = 77};
    const Notes written{note(60, 4.0), note(62, 5.0), note(64, 0.0)};
    const Notes expected = Humanizer::apply(written, track.humanize, nullptr, 4.0);
    QVERIFY(expected != written);
    QCOMPARE(settled(NoteRenderer::trackNotes(*project({track}), track, nullptr)),
             settled(expected));
}

void NoteRendererTest::melodyKnowsNoGroove()
{
    SmallLibrary content({note(60, 0.0)});
    content.addGroove("r", R"({"rhythmId": "r", "offsets": [{"timingOffsetBeats": 0.5}]})");
    content.addGroove("", R"({"rhythmId": "", "offsets": [{"timingOffsetBeats": 0.5}]})");
    content.library().reload();
    const Track track = melodyTrack({melody(notesInARow({60, 62, 64, 65}))});
    const auto song = project({track});
    QCOMPARE(NoteRenderer::trackNotes(*song, track, &content.library()),
             NoteRenderer::trackNotes(*song, track, nullptr));
}

void NoteRendererTest::muteAndSoloAreNotLookedAt()
{
    SmallLibrary content({note(60, 0.0)});
    Track track = loopTrack({loop("r", "l", 0.0, 8.0)});
    track.melodyBlocks = {melody({note(70, 1.0)})};
    const auto song = project({track, track});
    const Notes heard = NoteRenderer::trackNotes(*song, track, &content.library());
    QCOMPARE(heard.size(), 3);
    track.muted = true;
    song->tracks[1].solo = true;
    QCOMPARE(NoteRenderer::trackNotes(*song, track, &content.library()), heard);
}

// ---- Loops ---------------------------------------------------------------------------------

void NoteRendererTest::withoutALibraryOnlyTheMelodySounds()
{
    Track track = straight(loopTrack({loop("r", "l", 0.0, 8.0)}));
    track.melodyBlocks = {melody({note(70, 1.0)})};
    QCOMPARE(NoteRenderer::trackNotes(*project({track}), track, nullptr), Notes{note(70, 1.0)});
}

void NoteRendererTest::contentThatIsNotThereYieldsNothing_data()
{
    QTest::addColumn<QString>("layerId");
    QTest::addColumn<LoopSection>("section");
    QTest::addColumn<int>("index");
    QTest::newRow("another layer") << "otra" << LoopSection::Normal << 1;
    QTest::newRow("another section") << "l" << LoopSection::Intro << 1;
    QTest::newRow("another index") << "l" << LoopSection::Normal << 2;
    QTest::newRow("no layer") << "" << LoopSection::Normal << 1;
    QTest::newRow("a section that does not exist") << "l" << static_cast<LoopSection>(77) << 1;
}

void NoteRendererTest::contentThatIsNotThereYieldsNothing()
{
    QFETCH(QString, layerId);
    QFETCH(LoopSection, section);
    QFETCH(int, index);
    SmallLibrary content({note(60, 0.0)});
    QCOMPARE(loopNotes(content,
                       {loop("r", layerId, 0.0, 8.0, section, index), loop("r", "l", 8.0, 4.0)}),
             Notes{note(60, 8.0)});
}

void NoteRendererTest::uninstalledContentYieldsNothing()
{
    SmallLibrary content({note(60, 0.0)});
    const Track track = straight(loopTrack({loop("r", "l", 0.0, 8.0)}));
    const auto song = project({track});
    QCOMPARE(NoteRenderer::trackNotes(*song, track, &content.library()).size(), 2);
    QVERIFY(QFile::remove(content.library().installedDir() + "/a.content.json"));
    content.library().reload();
    QVERIFY(NoteRenderer::trackNotes(*song, track, &content.library()).isEmpty());
    QCOMPARE(song->tracks, QList<Track>{track});
}

void NoteRendererTest::shortBlockCutsItsVariant()
{
    SmallLibrary content({note(60, 0.0, 2.0), note(62, 3.5, 1.0), note(64, 4.0), note(65, 7.0)}, 2);
    QCOMPARE(loopNotes(content, {loop("r", "l", 0.0, 4.0)}),
             (Notes{note(60, 0.0, 2.0), note(62, 3.5, 0.5)}));
}

void NoteRendererTest::longBlockRepeatsItsVariant()
{
    SmallLibrary content({note(60, 0.0, 1.0), note(62, 1.5, 3.0), note(64, 3.0, 0.5)});
    QCOMPARE(loopNotes(content, {loop("r", "l", 0.0, 10.0)}),
             (Notes{note(60, 0.0), note(62, 1.5, 3.0), note(64, 3.0, 0.5), note(60, 4.0),
                    note(62, 5.5, 3.0), note(64, 7.0, 0.5), note(60, 8.0), note(62, 9.5, 0.5)}));
}

void NoteRendererTest::blockOfWholeCyclesRepeatsWithoutARemainder()
{
    SmallLibrary content({note(60, 0.0), note(62, 3.0, 5.0)});
    QCOMPARE(loopNotes(content, {loop("r", "l", 0.0, 8.0)}),
             (Notes{note(60, 0.0), note(62, 3.0, 5.0), note(60, 4.0), note(62, 7.0, 1.0)}));
}

void NoteRendererTest::noteAtTheEndOfTheBlock_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<bool>("sounds");
    QTest::newRow("exactly at the end is dropped") << 2.0 << false;
    QTest::newRow("1e-10 before the end is dropped") << 2.0 - 1e-10 << false;
    QTest::newRow("2e-9 before the end sounds") << 2.0 - 2e-9 << true;
    QTest::newRow("behind the end is dropped") << 2.5 << false;
}

void NoteRendererTest::noteAtTheEndOfTheBlock()
{
    QFETCH(double, start);
    SmallLibrary content({note(60, start)});
    const Notes notes = loopNotes(content, {loop("r", "l", 8.0, 2.0)});
    QTEST(!notes.isEmpty(), "sounds");
    if (!notes.isEmpty())
        QVERIFY(std::abs(notes.first().durationBeats - 2e-9) < 1e-12);
}

void NoteRendererTest::repetitionStartsAtTheBlock()
{
    SmallLibrary content({note(60, 0.0), note(62, 1.0)});
    QCOMPARE(starts(loopNotes(content, {loop("r", "l", 2.5, 6.0)})),
             QList<double>({2.5, 3.5, 6.5, 7.5}));
}

void NoteRendererTest::notesOutOfOrderAreAllLookedAt()
{
    SmallLibrary content({note(64, 3.5), note(60, 0.0), note(67, 3.0), note(62, 1.0)});
    QCOMPARE(pitches(loopNotes(content, {loop("r", "l", 0.0, 2.0)})), QList<int>({60, 62}));
}

void NoteRendererTest::notesPastTheCycleSoundInEveryPass()
{
    SmallLibrary content({note(60, 0.0), note(72, 5.0)});
    QCOMPARE(loopNotes(content, {loop("r", "l", 0.0, 8.0)}),
             (Notes{note(60, 0.0), note(60, 4.0), note(72, 5.0)}));
}

void NoteRendererTest::noteBeforeTheLoopSoundsBeforeTheBlock()
{
    SmallLibrary content({note(60, -0.5, 1.0)});
    QCOMPARE(loopNotes(content, {loop("r", "l", 8.0, 6.0)}),
             (Notes{note(60, 7.5), note(60, 11.5)}));
}

void NoteRendererTest::noPassStartsWithinTheToleranceOfTheEnd()
{
    SmallLibrary content({note(60, -0.5, 0.25)});
    QCOMPARE(loopNotes(content, {loop("r", "l", 8.0, 4.0 + 5e-10)}), Notes{note(60, 7.5, 0.25)});
    QCOMPARE(loopNotes(content, {loop("r", "l", 8.0, 4.0 + 5e-9)}).size(), 2);
}

void NoteRendererTest::cycleIsCountedInBarsOfTheRhythm_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::addColumn<int>("bars");
    QTest::addColumn<double>("cycle");
    QTest::newRow("one bar of 4/4") << 4 << 4 << 1 << 4.0;
    QTest::newRow("three bars of 3/4") << 3 << 4 << 3 << 9.0;
    QTest::newRow("one bar of 6/8") << 6 << 8 << 1 << 3.0;
    QTest::newRow("two bars of 7/8") << 7 << 8 << 2 << 7.0;
    QTest::newRow("one bar of 2/2") << 2 << 2 << 1 << 4.0;
    QTest::newRow("one bar of 1/16") << 1 << 16 << 1 << 0.25;
    QTest::newRow("one bar of 4/3") << 4 << 3 << 1 << 16.0 / 3.0;
    QTest::newRow("two negatives make a bar") << -4 << -4 << 1 << 4.0;
}

void NoteRendererTest::cycleIsCountedInBarsOfTheRhythm()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    QFETCH(int, bars);
    QFETCH(double, cycle);
    SmallLibrary content(rhythm("r", numerator, denominator),
                         {variant("l", {note(60, 0.0)}, bars)});
    QCOMPARE(starts(loopNotes(content, {loop("r", "l", 0.0, 2.5 * cycle)})),
             QList<double>({0.0, cycle, 2 * cycle}));
}

void NoteRendererTest::missingRhythmTakesTheProjectsBar()
{
    SmallLibrary content(rhythm("r", 4, 4), {variant("l", {note(60, 0.0)}, 2)});
    const Track track = straight(loopTrack({loop("otro", "l", 0.0, 12.0)}));
    const auto song = project({track}, {}, {.numerator = 5, .denominator = 8});
    QCOMPARE(starts(NoteRenderer::trackNotes(*song, track, &content.library())),
             QList<double>({0.0, 5.0, 10.0}));
}

void NoteRendererTest::cycleWithoutLengthYieldsNothing_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::addColumn<int>("bars");
    QTest::newRow("no bars") << 4 << 4 << 0;
    QTest::newRow("negative bars") << 4 << 4 << -1;
    QTest::newRow("the most negative bars") << 4 << 4 << std::numeric_limits<int>::min();
    QTest::newRow("a numerator of 0") << 0 << 4 << 1;
    QTest::newRow("a negative numerator") << -3 << 4 << 1;
    QTest::newRow("a negative denominator") << 3 << -4 << 1;
    QTest::newRow("a denominator of 0") << 4 << 0 << 1;
    QTest::newRow("0 over 0") << 0 << 0 << 1;
    QTest::newRow("no bars of a denominator of 0") << 4 << 0 << 0;
}

void NoteRendererTest::cycleWithoutLengthYieldsNothing()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    QFETCH(int, bars);
    ContentFixture content;
    content.addPackage("a", packageText(rhythm("bad", numerator, denominator), {layer("l")},
                                        {variant("l", {note(60, 0.0)}, bars)}));
    content.addPackage(
        "b", packageText(rhythm("good", 4, 4), {layer("m")}, {variant("m", {note(70, 0.0)})}));
    content.library().reload();
    const Track track =
        straight(loopTrack({loop("bad", "l", 0.0, 8.0), loop("good", "m", 8.0, 4.0)}));
    QCOMPARE(NoteRenderer::trackNotes(*project({track}), track, &content.library()),
             Notes{note(70, 8.0)});
}

void NoteRendererTest::blockWithoutLengthYieldsNothing_data()
{
    QTest::addColumn<double>("length");
    QTest::addColumn<bool>("sounds");
    QTest::newRow("0") << 0.0 << false;
    QTest::newRow("negative") << -4.0 << false;
    QTest::newRow("within the tolerance") << 5e-10 << false;
    QTest::newRow("exactly the tolerance") << 1e-9 << false;
    QTest::newRow("just above the tolerance") << 2e-9 << true;
    QTest::newRow("no number") << kNaN << false;
    QTest::newRow("infinite") << kInfinity << false;
    QTest::newRow("infinitely negative") << -kInfinity << false;
}

void NoteRendererTest::blockWithoutLengthYieldsNothing()
{
    QFETCH(double, length);
    QFETCH(bool, sounds);
    SmallLibrary content({note(60, 0.0)});
    const Notes notes = loopNotes(content, {loop("r", "l", 0.0, length), loop("r", "l", 8.0, 4.0)});
    QCOMPARE(notes, sounds ? (Notes{note(60, 0.0, length), note(60, 8.0)}) : Notes{note(60, 8.0)});
}

void NoteRendererTest::variantWithoutNotesEndsAtOnce()
{
    SmallLibrary content(Notes{});
    const Track track = loopTrack({loop("r", "l", 0.0, 1e300)});
    const auto [notes, cut] = NoteRenderer::render(*project({track}), track, &content.library());
    QVERIFY(notes.isEmpty());
    QVERIFY(!cut);
}

void NoteRendererTest::overlappingLoopBlocksAllSound()
{
    SmallLibrary content({note(60, 0.0), note(64, 2.0)});
    QCOMPARE(loopNotes(content, {loop("r", "l", 2.0, 4.0), loop("r", "l", 0.0, 4.0)}).size(), 4);
}

// ---- Chords under loops --------------------------------------------------------------------

void NoteRendererTest::chordIsLookedUpForEveryNote()
{
    // Written C and E, over I, IV and V: the roots C, F and G, the thirds E, A and B.
    SmallLibrary content({note(60, 0.0), note(64, 2.0)});
    QCOMPARE(pitches(loopNotes(content, {loop("r", "l", 0.0, 12.0)}, harmony({1, 4, 5}))),
             QList<int>({60, 64, 65, 69, 55, 59}));
}

void NoteRendererTest::chordMayChangeInsideABar()
{
    SmallLibrary content({note(60, 0.0), note(60, 1.0), note(60, 2.0), note(60, 3.0)});
    HarmonyTrack chords;
    chords.blocks = {{.barIndex = 0, .events = {chord(1, 0.0, 1.5), chord(4, 1.5, 1.5)}}};
    // The last beat of the bar has no chord.
    QCOMPARE(pitches(loopNotes(content, {loop("r", "l", 0.0, 4.0)}, chords)),
             QList<int>({60, 60, 65, 60}));
}

void NoteRendererTest::noteNearAChangeOfChord_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("pitch");
    // IV up to 1.5, then V up to the bar line; C over them is F and G.
    QTest::newRow("a millionth before the change is under the old chord") << 1.5 - 1e-6 << 65;
    QTest::newRow("within the tolerance before the change is under the new") << 1.5 - 1e-10 << 55;
    QTest::newRow("at the change is under the new") << 1.5 << 55;
    QTest::newRow("a millionth before the bar line is under the last") << 4.0 - 1e-6 << 55;
    QTest::newRow("within the tolerance before the bar line is under none") << 4.0 - 1e-10 << 60;
    QTest::newRow("at the bar line is in the next bar") << 4.0 << 65;
}

void NoteRendererTest::noteNearAChangeOfChord()
{
    QFETCH(double, beat);
    QFETCH(int, pitch);
    SmallLibrary content({note(60, beat)}, 4);
    HarmonyTrack chords;
    chords.blocks = {{.barIndex = 0, .events = {chord(4, 0.0, 1.5), chord(5, 1.5, 2.5)}},
                     {.barIndex = 1, .events = {chord(4, 0.0, 4.0)}}};
    QCOMPARE(pitches(loopNotes(content, {loop("r", "l", 0.0, 8.0)}, chords)), QList<int>{pitch});
}

void NoteRendererTest::ringingNoteKeepsThePitchOfItsStart()
{
    SmallLibrary content({note(60, 3.0, 4.0)});
    QCOMPARE(loopNotes(content, {loop("r", "l", 0.0, 4.5)}, harmony({4, 5})),
             (Notes{note(65, 3.0, 1.5)}));
}

void NoteRendererTest::withoutAChordTheLoopOnlyMovesIntoTheKey()
{
    SmallLibrary content({note(60, 0.0), note(61, 1.0), note(64, 2.0)});
    const Track track = straight(loopTrack({loop("r", "l", 0.0, 4.0)}));
    const auto song = project({track}, {}, {}, {.rootPitchClass = 9, .mode = KeyMode::Minor});
    QCOMPARE(pitches(NoteRenderer::trackNotes(*song, track, &content.library())),
             QList<int>({69, 70, 73}));
}

void NoteRendererTest::degreeThatIsNoneOnlyMovesIntoTheKey_data()
{
    QTest::addColumn<int>("degree");
    for (const int degree : {0, 8, -1, kMaxInt})
        QTest::addRow("%d", degree) << degree;
}

void NoteRendererTest::degreeThatIsNoneOnlyMovesIntoTheKey()
{
    QFETCH(int, degree);
    SmallLibrary content({note(64, 0.0)});
    HarmonyTrack chords;
    chords.blocks = {{.barIndex = 0, .events = {chord(degree, 0.0, 4.0)}}};
    const Track track = straight(loopTrack({loop("r", "l", 0.0, 4.0)}));
    const auto song = project({track}, chords, {}, {.rootPitchClass = 2});
    QCOMPARE(pitches(NoteRenderer::trackNotes(*song, track, &content.library())), QList<int>{66});
}

void NoteRendererTest::mutedHarmonyIsStillFollowed()
{
    SmallLibrary content({note(60, 0.0)});
    HarmonyTrack chords = harmony({4});
    chords.muted = true;
    QCOMPARE(pitches(loopNotes(content, {loop("r", "l", 0.0, 4.0)}, chords)), QList<int>{65});
}

void NoteRendererTest::drumLayerKeepsItsPitches()
{
    SmallLibrary content({note(36, 0.0), note(42, 1.0), note(200, 2.0)}, 1, false);
    const Track track = straight(loopTrack({loop("r", "l", 0.0, 4.0)}));
    for (int degree = 0; degree <= 8; ++degree) {
        const auto song = project({track}, harmony({degree}), {}, {.rootPitchClass = 7});
        QCOMPARE(pitches(NoteRenderer::trackNotes(*song, track, &content.library())),
                 QList<int>({36, 42, 200}));
    }
}

void NoteRendererTest::missingLayerFollowsTheChords()
{
    ContentFixture content;
    content.addPackage("a", packageText(rhythm("r", 4, 4), {}, {variant("l", {note(60, 0.0)})}));
    content.library().reload();
    const Track track = straight(loopTrack({loop("r", "l", 0.0, 4.0)}));
    QCOMPARE(pitches(NoteRenderer::trackNotes(*project({track}, harmony({4})), track,
                                              &content.library())),
             QList<int>{65});
}

void NoteRendererTest::threeFourRhythmFollowsTheBarsOfAFourFourProject()
{
    SmallLibrary content(rhythm("r", 3, 4), {variant("l", {note(60, 0.0)})});
    // Starts at 0, 3, 6 and 9: bars 0, 0, 1 and 2 of the project.
    QCOMPARE(loopNotes(content, {loop("r", "l", 0.0, 12.0)}, harmony({1, 4, 5})),
             (Notes{note(60, 0.0), note(60, 3.0), note(65, 6.0), note(55, 9.0)}));
}

// ---- Humanizing ----------------------------------------------------------------------------

void NoteRendererTest::eachLoopBlockIsHumanizedByItself()
{
    const Notes written = notesInARow({60, 62, 64, 65});
    SmallLibrary content(written, 1, false);
    Track track = loopTrack({loop("r", "l", 0.0, 4.0), loop("r", "l", 6.0, 2.0)});
    track.melodyBlocks = {melody({note(80, 2.0)})};
    track.humanize = {.enabled = true, .intensity = 0.7F, .seed = 5};
    const auto humanized = [&](const Notes& notes) {
        return Humanizer::apply(notes, track.humanize, nullptr, 4.0);
    };
    QCOMPARE(settled(NoteRenderer::trackNotes(*project({track}), track, &content.library())),
             settled(humanized({note(80, 2.0)}) + humanized(written) +
                     humanized({note(60, 6.0), note(62, 7.0)})));
}

void NoteRendererTest::equalLoopBlocksGetTheSameJitter()
{
    SmallLibrary content(notesInARow({60, 62, 64, 65}), 1, false);
    Track track = loopTrack({loop("r", "l", 4.0, 4.0), loop("r", "l", 12.0, 4.0)});
    track.humanize.intensity = 1.0F;
    const Notes notes = NoteRenderer::trackNotes(*project({track}), track, &content.library());
    QCOMPARE(notes.size(), 8);
    double moved = 0.0;
    for (qsizetype i = 0; i < 4; ++i) {
        QVERIFY(std::abs(notes[i + 4].startBeat - notes[i].startBeat - 8.0) < 1e-12);
        QCOMPARE(notes[i + 4].velocity, notes[i].velocity);
        moved += std::abs(notes[i].startBeat - 4.0 - static_cast<double>(i));
    }
    QVERIFY(moved > 1e-3);
}

void NoteRendererTest::grooveOfTheRhythmPullsLoops()
{
    SmallLibrary content(notesInARow({60, 62}), 1, false);
    Track track = loopTrack({loop("r", "l", 4.0, 4.0)});
    track.humanize.intensity = 1.0F;
    const auto song = project({track});
    const Notes before = NoteRenderer::trackNotes(*song, track, &content.library());
    content.addGroove("r", R"({"rhythmId": "r", "offsets": [
        {"position": 0.0, "timingOffsetBeats": 0.25, "velocityOffset": -30}]})");
    content.library().reload();
    const Notes after = NoteRenderer::trackNotes(*song, track, &content.library());
    QCOMPARE(after.size(), 2);
    QVERIFY(std::abs(after[0].startBeat - before[0].startBeat - 0.25) < 1e-9);
    QCOMPARE(after[0].velocity, before[0].velocity - 30);
    QCOMPARE(after[1], before[1]);
}

void NoteRendererTest::grooveIsTakenByTheRhythmOfTheBlock()
{
    SmallLibrary content({note(60, 0.0)}, 1, false);
    content.addGroove("x", R"({"rhythmId": "otro", "offsets": [{"timingOffsetBeats": 0.5}]})");
    content.library().reload();
    Track track = loopTrack({loop("r", "l", 4.0, 4.0)});
    track.humanize.intensity = 1.0F;
    const auto song = project({track});
    const double own = NoteRenderer::trackNotes(*song, track, &content.library()).first().startBeat;
    QVERIFY(std::abs(own - 4.0) <= 0.035);
    track.loopBlocks = {loop("otro", "l", 4.0, 4.0)};
    const double other =
        NoteRenderer::trackNotes(*song, track, &content.library()).first().startBeat;
    QVERIFY(std::abs(other - own - 0.5) < 1e-9);
}

void NoteRendererTest::grooveStandsInTheBarOfTheProject()
{
    SmallLibrary content(rhythm("r", 3, 4), {variant("l", {note(60, 0.0)})}, false);
    content.addGroove("r", R"({"rhythmId": "r", "offsets": [
        {"position": 3.0, "timingOffsetBeats": 0.5}]})");
    content.library().reload();
    Track track = loopTrack({loop("r", "l", 0.0, 12.0)});
    track.humanize.intensity = 1.0F;
    const Notes notes = NoteRenderer::trackNotes(*project({track}), track, &content.library());
    // Of the starts at 0, 3, 6 and 9, only 3 stands at the fourth beat of a bar of 4.
    QList<int> pulled;
    for (const NoteEvent& note : notes)
        pulled.append(std::abs(note.startBeat - 3.0 * std::round(note.startBeat / 3.0)) > 0.1);
    QCOMPARE(pulled, QList<int>({0, 1, 0, 0}));
}

void NoteRendererTest::grooveNeedsHumanizing()
{
    SmallLibrary content({note(60, 0.0)});
    content.addGroove("r", R"({"rhythmId": "r", "offsets": [{"timingOffsetBeats": 0.5}]})");
    content.library().reload();
    QCOMPARE(loopNotes(content, {loop("r", "l", 0.0, 4.0)}), Notes{note(60, 0.0)});
}

void NoteRendererTest::cutComesBeforeHumanizing()
{
    SmallLibrary content({note(60, 3.0, 4.0)}, 1, false);
    Track track = loopTrack({loop("r", "l", 0.0, 4.0)});
    track.humanize.intensity = 1.0F;
    const Notes notes = NoteRenderer::trackNotes(*project({track}), track, &content.library());
    QCOMPARE(notes.size(), 1);
    QVERIFY(notes.first().startBeat != 3.0);
    QCOMPARE(notes.first().durationBeats, 1.0);
}

void NoteRendererTest::melodyAndLoopsAreSortedTogether()
{
    SmallLibrary content(notesInARow({60, 62, 64, 65}), 1, false);
    Track track = loopTrack({loop("r", "l", 4.0, 4.0), loop("r", "l", 0.0, 4.0)});
    track.melodyBlocks = {melody({note(80, 3.5), note(81, 0.5)}, 2.0)};
    QCOMPARE(
        pitches(NoteRenderer::trackNotes(*project({track}), straight(track), &content.library())),
        QList<int>({60, 62, 64, 81, 65, 60, 62, 80, 64, 65}));
}

// ---- The chords themselves -----------------------------------------------------------------

void NoteRendererTest::chordsBecomeNotes_data()
{
    QTest::addColumn<int>("degree");
    QTest::addColumn<ChordExtension>("extension");
    QTest::addColumn<KeySignature>("key");
    QTest::addColumn<QList<int>>("expected");
    const KeySignature c{.rootPitchClass = 0, .mode = KeyMode::Major};
    const KeySignature aMinor{.rootPitchClass = 9, .mode = KeyMode::Minor};
    QTest::newRow("I of C") << 1 << ChordExtension::Triad << c << QList<int>{48, 52, 55};
    QTest::newRow("V7 of C") << 5 << ChordExtension::Seventh << c << QList<int>{55, 59, 62, 65};
    QTest::newRow("ii9 of C") << 2 << ChordExtension::Ninth << c << QList<int>{50, 53, 57, 60, 64};
    QTest::newRow("i of A Minor") << 1 << ChordExtension::Triad << aMinor << QList<int>{57, 60, 64};
    QTest::newRow("an unknown extension is a triad")
        << 4 << static_cast<ChordExtension>(9) << c << QList<int>{53, 57, 60};
}

void NoteRendererTest::chordsBecomeNotes()
{
    QFETCH(int, degree);
    QFETCH(ChordExtension, extension);
    QFETCH(KeySignature, key);
    QFETCH(QList<int>, expected);
    HarmonyTrack chords;
    chords.blocks = {{.barIndex = 0, .events = {chord(degree, 1.0, 2.5, extension)}}};
    Notes notes;
    for (const int pitch : expected)
        notes.append(note(pitch, 1.0, 2.5, 72));
    QCOMPARE(settled(NoteRenderer::harmonyNotes(*project({}, chords, {}, key))), settled(notes));
}

void NoteRendererTest::chordsStandInTheirBars()
{
    HarmonyTrack chords;
    chords.blocks = {{.barIndex = 3, .events = {chord(1, 0.5, 1.0)}},
                     {.barIndex = 7, .events = {chord(1, 0.0, 9.0)}}};
    const Notes notes = NoteRenderer::harmonyNotes(
        *project({}, chords, {.numerator = 6, .denominator = 8, .isCompound = true}));
    QCOMPARE(starts(notes), QList<double>({9.5, 9.5, 9.5, 21.0, 21.0, 21.0}));
    QCOMPARE(notes.last().durationBeats, 9.0);
}

void NoteRendererTest::chordsAreSorted()
{
    HarmonyTrack chords;
    chords.blocks = {{.barIndex = 2, .events = {chord(1, 2.0, 1.0), chord(2, 0.0, 1.0)}},
                     {.barIndex = -1, .events = {chord(3, 0.0, 1.0)}},
                     {.barIndex = 2, .events = {chord(4, 1.0, 1.0)}}};
    QCOMPARE(starts(NoteRenderer::harmonyNotes(*project({}, chords))),
             QList<double>({-4, -4, -4, 8, 8, 8, 9, 9, 9, 10, 10, 10}));
}

void NoteRendererTest::chordsAreNotHumanizedNorMuted()
{
    HarmonyTrack chords = harmony({1, 4});
    chords.muted = true;
    const Track soloed = [] {
        Track track;
        track.solo = true;
        return track;
    }();
    const Notes notes = NoteRenderer::harmonyNotes(*project({soloed}, chords));
    QCOMPARE(starts(notes), QList<double>({0, 0, 0, 4, 4, 4}));
    for (const NoteEvent& note : notes)
        QCOMPARE(note.velocity, 72);
}

void NoteRendererTest::degreeThatIsNoneSoundsNoChord()
{
    HarmonyTrack chords;
    for (const int degree : {0, 8, -1, kMaxInt})
        chords.blocks.append({.barIndex = 0, .events = {chord(degree, 0.0, 4.0)}});
    QVERIFY(NoteRenderer::harmonyNotes(*project({}, chords)).isEmpty());
}

// ---- Laws ----------------------------------------------------------------------------------

void NoteRendererTest::rendererAgreesWithItsPlainForm()
{
    qsizetype compared = 0;
    for (quint32 seed = 0; seed < 40; ++seed) {
        ContentFixture content;
        ContentDraw draw(seed);
        draw.addTo(content);
        Generator generator(seed);
        for (int round = 0; round < 200; ++round) {
            Project song;
            generator.fill(song);
            draw.pointTracksHere(song);
            for (const Track& track : song.tracks) {
                const Notes notes = NoteRenderer::trackNotes(song, track, &content.library());
                QVERIFY(isSorted(notes));
                QVERIFY2(settled(notes) ==
                             settled(plainTrackNotes(song, track, &content.library())),
                         qPrintable(QStringLiteral("seed %1 round %2").arg(seed).arg(round)));
                compared += notes.size();
            }
        }
    }
    QVERIFY2(compared > 50000, qPrintable(QString::number(compared)));
}

void NoteRendererTest::equalProjectsSoundEqual()
{
    ContentFixture content;
    ContentDraw(1).addTo(content);
    for (quint32 seed = 0; seed < 50; ++seed) {
        Project song;
        Project twin;
        Generator(seed).fill(song);
        Generator(seed).fill(twin);
        ContentDraw(seed).pointTracksHere(song);
        ContentDraw(seed).pointTracksHere(twin);
        for (qsizetype i = 0; i < song.tracks.size(); ++i)
            QCOMPARE(NoteRenderer::trackNotes(song, song.tracks[i], &content.library()),
                     NoteRenderer::trackNotes(twin, twin.tracks[i], &content.library()));
        QCOMPARE(NoteRenderer::harmonyNotes(song), NoteRenderer::harmonyNotes(twin));
    }
}

void NoteRendererTest::renderedNotesAreSortedAndFinite()
{
    ContentFixture content;
    ContentDraw draw(2);
    draw.addTo(content);
    Generator generator(9, Numbers::AnyFinite);
    qsizetype loopNotes = 0;
    for (int round = 0; round < 500; ++round) {
        Project song;
        generator.fill(song);
        draw.pointTracksHere(song);
        Notes all = NoteRenderer::harmonyNotes(song);
        QVERIFY(isSorted(all));
        for (Track& track : song.tracks) {
            // As long as they are drawn they would run into the bound every time.
            for (LoopBlock& block : track.loopBlocks)
                block.durationBeats = std::fmod(std::abs(block.durationBeats), 64.0);
            const Notes notes = NoteRenderer::trackNotes(song, track, &content.library());
            QVERIFY(isSorted(notes));
            loopNotes += notes.size() - NoteRenderer::trackNotes(song, track, nullptr).size();
            all += notes;
        }
        for (const NoteEvent& note : all)
            QVERIFY(std::isfinite(note.startBeat) && std::isfinite(note.durationBeats));
    }
    QVERIFY2(loopNotes > 1000, qPrintable(QString::number(loopNotes)));
}

// ---- Bounds and hostile numbers ------------------------------------------------------------

void NoteRendererTest::lastNoteWithinTheBoundIsRendered()
{
    SmallLibrary content(Notes(1000, note(60, 0.0)), 1, false);
    const auto passes = static_cast<double>(NoteRenderer::kMaxTrackNotes / 1000);
    Track track = straight(loopTrack({loop("r", "l", 0.0, 4.0 * passes)}));
    const auto song = project({track});
    const auto most = NoteRenderer::render(*song, track, &content.library());
    QCOMPARE(most.notes.size(), NoteRenderer::kMaxTrackNotes);
    QVERIFY(!most.cut);

    track.loopBlocks.first().durationBeats += 1.0;
    const auto more = NoteRenderer::render(*song, track, &content.library());
    QVERIFY(more.cut);
    QVERIFY(more.notes.size() <= NoteRenderer::kMaxTrackNotes);
}

void NoteRendererTest::boundCutsTheTrack_data()
{
    QTest::addColumn<int>("denominator");
    QTest::addColumn<double>("noteStart");
    QTest::addColumn<double>("blockStart");
    QTest::addColumn<double>("length");
    QTest::newRow("a thousand million repetitions") << 4 << 0.0 << 0.0 << 4e9;
    QTest::newRow("a length past all counting") << 4 << 0.0 << 0.0 << 1e300;
    QTest::newRow("the greatest length") << 4 << 0.0 << 0.0 << kMaxDouble;
    QTest::newRow("the shortest bar") << kMaxInt << 0.0 << 0.0 << 64.0;
    QTest::newRow("notes far before the loop") << 4 << -1e300 << 0.0 << 1e300;
    QTest::newRow("a block at the end of the numbers") << 4 << 0.0 << kMaxDouble << 1e300;
}

void NoteRendererTest::boundCutsTheTrack()
{
    QFETCH(int, denominator);
    QFETCH(double, noteStart);
    QFETCH(double, blockStart);
    QFETCH(double, length);
    SmallLibrary content(rhythm("r", 4, denominator), {variant("l", {note(60, noteStart)}),
                                                       variant("l", {note(62, 0.0)}, 1, 2)});
    const Track track = straight(loopTrack({loop("r", "l", blockStart, length)}));
    const auto [notes, cut] = NoteRenderer::render(*project({track}), track, &content.library());
    QVERIFY(cut);
    QVERIFY(notes.size() <= NoteRenderer::kMaxTrackNotes);
    QVERIFY(isSorted(notes));
}

void NoteRendererTest::boundCountsAllBlocksOfATrack()
{
    SmallLibrary content(Notes(1000, note(60, 0.0)), 1, false);
    const auto passes = static_cast<double>(NoteRenderer::kMaxTrackNotes / 1000);
    const LoopBlock block = loop("r", "l", 0.0, 0.6 * 4.0 * passes);
    const Track one = straight(loopTrack({block}));
    QVERIFY(!NoteRenderer::render(*project(), one, &content.library()).cut);
    const Track three = straight(loopTrack({block, block, block}));
    const auto [notes, cut] = NoteRenderer::render(*project(), three, &content.library());
    QVERIFY(cut);
    QVERIFY(notes.size() <= NoteRenderer::kMaxTrackNotes);
}

void NoteRendererTest::variantBeyondTheBoundYieldsNothing()
{
    SmallLibrary content(Notes(3000, note(60, 0.0)), 1, false);
    Track track = straight(loopTrack(QList<LoopBlock>(400, loop("r", "l", 0.0, 1.0))));
    track.melodyBlocks = {melody({note(80, 0.0)})};
    const auto [notes, cut] = NoteRenderer::render(*project(), track, &content.library());
    QVERIFY(cut);
    // 333 passes of 3000 notes fit; the melody is not counted.
    QCOMPARE(notes.size(), 999001);
}

void NoteRendererTest::nobodyNeedsToHearOfTheCut()
{
    SmallLibrary content(Notes(1000, note(60, 0.0)), 1, false);
    const Track track = straight(loopTrack({loop("r", "l", 0.0, 1e12)}));
    const auto [notes, cut] = NoteRenderer::render(*project(), track, &content.library());
    QVERIFY(cut);
    QCOMPARE(NoteRenderer::trackNotes(*project(), track, &content.library()), notes);
}

void NoteRendererTest::notesWithoutAPlaceAreLeftOut_data()
{
    QTest::addColumn<double>("noteStart");
    QTest::addColumn<double>("noteLength");
    QTest::addColumn<double>("blockStart");
    QTest::newRow("a start that is no number") << kNaN << 1.0 << 0.0;
    QTest::newRow("an infinitely early start") << -kInfinity << 1.0 << 0.0;
    QTest::newRow("a length that is no number") << 0.0 << kNaN << 0.0;
    QTest::newRow("an infinite length") << 0.0 << kInfinity << 0.0;
    QTest::newRow("a block that starts nowhere") << 0.0 << 1.0 << kNaN;
    QTest::newRow("a block that starts at infinity") << 0.0 << 1.0 << kInfinity;
    QTest::newRow("a sum that is infinite") << 1.5e308 << 1.0 << 1.5e308;
}

void NoteRendererTest::notesWithoutAPlaceAreLeftOut()
{
    QFETCH(double, noteStart);
    QFETCH(double, noteLength);
    QFETCH(double, blockStart);
    for (const bool humanized : {false, true}) {
        Track track =
            melodyTrack({melody({note(60, noteStart, noteLength)}, blockStart, kMaxDouble),
                         melody({note(62, 1.0)})});
        track.humanize.enabled = humanized;
        const Notes notes = NoteRenderer::trackNotes(*project({track}), track, nullptr);
        QCOMPARE(pitches(notes), QList<int>{62});
    }
}

void NoteRendererTest::grooveCannotThrowANoteOutOfTheNumbers()
{
    SmallLibrary content(notesInARow({60, 62}), 1, false);
    content.addGroove("r", R"({"rhythmId": "r", "offsets": [
        {"position": 0.0, "timingOffsetBeats": 1.7e308}]})");
    content.library().reload();
    Track track = loopTrack({loop("r", "l", 1.7e308, 4.0), loop("r", "l", 1.0, 3.0)});
    track.humanize.intensity = 1.0F;
    const Notes notes = NoteRenderer::trackNotes(*project({track}), track, &content.library());
    QCOMPARE(notes.size(), 2);
    for (const NoteEvent& note : notes)
        QVERIFY(std::isfinite(note.startBeat));
}

void NoteRendererTest::meterWithoutABarLeavesTheRest_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::newRow("4 over 0") << 4 << 0;
    QTest::newRow("0 over 0") << 0 << 0;
    QTest::newRow("0 over 4") << 0 << 4;
    QTest::newRow("-4 over 4") << -4 << 4;
    QTest::newRow("-4 over 0") << -4 << 0;
}

void NoteRendererTest::meterWithoutABarLeavesTheRest()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    SmallLibrary content({note(60, 0.0)});
    Track track = loopTrack({loop("r", "l", 0.0, 8.0), loop("otro", "l", 0.0, 8.0)});
    track.melodyBlocks = {melody({note(70, 1.0)})};
    const auto song =
        project({track}, harmony({4, 4, 4}), {.numerator = numerator, .denominator = denominator},
                {.rootPitchClass = 2});
    QVERIFY(NoteRenderer::harmonyNotes(*song).isEmpty());
    // No chord is in force, and a rhythm that is not there has no bar to borrow.
    QCOMPARE(pitches(NoteRenderer::trackNotes(*song, straight(track), &content.library())),
             QList<int>({62, 70, 62}));
    QCOMPARE(NoteRenderer::trackNotes(*song, track, &content.library()).size(), 3);
}

void NoteRendererTest::chordWithoutAPlaceIsLeftOut()
{
    HarmonyTrack chords;
    chords.blocks = {{.barIndex = 0,
                      .events = {chord(1, kNaN, 1.0), chord(1, 0.0, kInfinity),
                                 chord(1, -kInfinity, 1.0), chord(4, 1.0, 1.0)}},
                     {.barIndex = kMaxInt, .events = {chord(5, 0.0, 1.0)}}};
    const Notes notes = NoteRenderer::harmonyNotes(*project({}, chords));
    QCOMPARE(pitches(notes), QList<int>({53, 57, 60, 55, 59, 62}));
    QCOMPARE(notes.last().startBeat, 8589934588.0);
}

void NoteRendererTest::hostileProjectsAreRendered()
{
    ContentFixture content;
    ContentDraw draw(3);
    draw.addTo(content);
    Generator generator(4, Numbers::Hostile);
    int cuts = 0;
    for (int round = 0; round < 400; ++round) {
        Project song;
        generator.fill(song);
        if (cuts < 4)
            draw.pointTracksHere(song);
        QVERIFY(isSorted(NoteRenderer::harmonyNotes(song)));
        for (const Track& track : song.tracks) {
            const auto [notes, cut] = NoteRenderer::render(song, track, &content.library());
            cuts += cut;
            QVERIFY(isSorted(notes));
            QVERIFY(notes.size() <= NoteRenderer::kMaxTrackNotes + 16);
            for (const NoteEvent& note : notes)
                QVERIFY(std::isfinite(note.startBeat) && std::isfinite(note.durationBeats));
        }
    }
    QVERIFY(cuts > 0);
}

VELTA_GUILESS_TEST(NoteRendererTest)

} // namespace NoteRendererTests

#include "NoteRendererTest.moc"
