#include "model/ProjectEdits.h"

#include "model/Project.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QSignalSpy>
#include <QTest>

#include <limits>

namespace ProjectEditsTests {

using namespace ProjectBuilder;

namespace {

Track accompaniment(const QString& name)
{
    Track track;
    track.name = name;
    track.isAccompaniment = true;
    return track;
}

Track plain(const QString& name)
{
    Track track;
    track.name = name;
    return track;
}

QStringList namesOf(const QList<Track>& tracks)
{
    QStringList names;
    for (const Track& track : tracks)
        names.append(track.name);
    return names;
}

} // namespace

class ProjectEditsTest : public QObject {
    Q_OBJECT

private slots:
    void anEmptyBlockToWriteInIsNoDifference();
    void everyOtherChangeIsADifference();
    void whatWouldBeMissedIsContent_data();
    void whatWouldBeMissedIsContent();
    void askingForContentChangesNothing();

    void aTrackIsFoundAfterOthersHaveComeOrGone_data();
    void aTrackIsFoundAfterOthersHaveComeOrGone();

    void aNewTrackStandsAboveTheAccompaniment_data();
    void aNewTrackStandsAboveTheAccompaniment();
    void aNewTrackIsAPianoWithDefaults();
    void aNewTrackHasAMelodyAsLongAsTheSong_data();
    void aNewTrackHasAMelodyAsLongAsTheSong();
    void aNewTrackTakesItsNameAsItIs_data();
    void aNewTrackTakesItsNameAsItIs();
    void takingTheNewTrackAwayGivesTheFormerProject();

    void anotherMeterCountsTheBarsOfTheChordsAnew();
    void onlyOneIsMinor_data();
    void onlyOneIsMinor();
    void everyRootIsTaken();
    void aKeyChangesNothingElse();

    void theLayerOfATrackIsItsOwnOrThatOfItsFirstLoop_data();
    void theLayerOfATrackIsItsOwnOrThatOfItsFirstLoop();
    void aBeatBelongsToTheBarThatHoldsIt_data();
    void aBeatBelongsToTheBarThatHoldsIt();
    void theRhythmOfAWorkIsThatOfItsEarliestLoop();
    void theSameLoopAtItsPlaceAddsNothing_data();
    void theSameLoopAtItsPlaceAddsNothing();
    void theLoopThatAStateLacksIsFound();
    void aLoopOfANewLayerMakesATrackAtTheEnd();
    void loopsOfOneLayerGatherOnOneTrack();
    void aLoopGoesToTheFirstTrackOfItsLayer_data();
    void aLoopGoesToTheFirstTrackOfItsLayer();
    void aTrackTakesTheLayerOfItsLoops();
    void aFullListTakesLoopsOfItsOwnLayersOnly();

    void aTakeGoesToTheLastVoiceTrack();

    void nothingIsAnnounced();
    void theTrackOfAnIndexIsRemoved_data();
    void theTrackOfAnIndexIsRemoved();
};

// ---- Content -------------------------------------------------------------------------------

void ProjectEditsTest::whatWouldBeMissedIsContent_data()
{
    QTest::addColumn<QList<Track>>("tracks");
    QTest::addColumn<QList<AudioTrack>>("voices");
    QTest::addColumn<HarmonyTrack>("harmony");
    QTest::addColumn<bool>("content");
    const QList<Track> none;
    const QList<AudioTrack> silent;
    const HarmonyTrack noChords;
    const Track empty = melodyTrack({});
    const Track emptyBlocks = melodyTrack({melody({}), melody({}, 8.0)});
    const Track sung = melodyTrack({melody({}), melody({note(60, 0.0)}, 4.0)});
    const Track looped = loopTrack({loop("zamba", "bombo", 0.0, 4.0)});
    HarmonyTrack muted = harmony({1});
    muted.muted = true;

    QTest::newRow("nothing at all") << none << silent << noChords << false;
    QTest::newRow("a track by itself") << QList{empty} << silent << noChords << false;
    QTest::newRow("thirteen tracks by themselves")
        << QList<Track>(13, empty) << silent << noChords << false;
    QTest::newRow("empty melody blocks") << QList{emptyBlocks} << silent << noChords << false;
    QTest::newRow("an accompaniment track without blocks")
        << QList{accompaniment("Bombo")} << silent << noChords << false;
    QTest::newRow("one note") << QList{sung} << silent << noChords << true;
    QTest::newRow("a note in the last track")
        << QList{empty, emptyBlocks, sung} << silent << noChords << true;
    QTest::newRow("a loop block") << QList{looped} << silent << noChords << true;
    QTest::newRow("a loop block behind other tracks")
        << QList{empty, emptyBlocks, looped} << silent << noChords << true;
    QTest::newRow("a voice track without clips")
        << none << QList{voiceTrack({})} << noChords << false;
    QTest::newRow("a clip") << none << QList{voiceTrack({clip("voz.wav")})} << noChords << true;
    QTest::newRow("a clip in the second voice track")
        << none << QList{voiceTrack({}), voiceTrack({clip("voz.wav")})} << noChords << true;
    QTest::newRow("bars without chords")
        << none << silent << HarmonyTrack{.blocks = {{.barIndex = 2, .events = {}}}} << false;
    QTest::newRow("a chord") << none << silent << harmony({0, 0, 5}) << true;
    QTest::newRow("a muted chord") << none << silent << muted << true;
    QTest::newRow("a chord of no degree")
        << none << silent << HarmonyTrack{.blocks = {{.events = {chord(9, 0.0, 4.0)}}}} << true;
}

void ProjectEditsTest::whatWouldBeMissedIsContent()
{
    QFETCH(QList<Track>, tracks);
    QFETCH(QList<AudioTrack>, voices);
    QFETCH(HarmonyTrack, harmony);
    const auto song = project(tracks, harmony);
    song->audioTracks = voices;
    song->name = "Zamba";
    song->bpm = 84;
    song->collapsedGroups = {"ritmo"};
    QTEST(ProjectEdits::hasContent(*song), "content");
}

void ProjectEditsTest::askingForContentChangesNothing()
{
    for (quint32 seed = 0; seed < 200; ++seed) {
        const auto song = Generator(seed, Numbers::AnyFinite).project();
        const QJsonObject before = song->toJson();
        const bool content = ProjectEdits::hasContent(*song);
        QCOMPARE(song->toJson(), before);
        QCOMPARE(ProjectEdits::hasContent(*song), content);
    }
}

// ---- Tracks --------------------------------------------------------------------------------

void ProjectEditsTest::aTrackIsFoundAfterOthersHaveComeOrGone_data()
{
    QTest::addColumn<QString>("former");
    QTest::addColumn<QString>("present");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("after");
    QTest::newRow("nothing has come") << "abc"
                                      << "abc" << 1 << 1;
    QTest::newRow("another name is no other track") << "abc"
                                                    << "axc" << 1 << 1;
    QTest::newRow("one came before it") << "abc"
                                        << "axbc" << 1 << 2;
    QTest::newRow("one came behind it") << "abc"
                                        << "abxc" << 1 << 1;
    QTest::newRow("two came at the end") << "abc"
                                         << "abcxy" << 2 << 2;
    QTest::newRow("one went before it") << "abc"
                                        << "bc" << 2 << 1;
    QTest::newRow("one went behind it") << "abc"
                                        << "ab" << 1 << 1;
    QTest::newRow("it went") << "abc"
                             << "ac" << 1 << -1;
    QTest::newRow("the last one went") << "a"
                                       << "" << 0 << -1;
    QTest::newRow("two went, it among them") << "abcd"
                                             << "ad" << 2 << -1;
    QTest::newRow("none is none") << "abc"
                                  << "xabc" << -1 << -1;
}

void ProjectEditsTest::aTrackIsFoundAfterOthersHaveComeOrGone()
{
    const auto named = [](const QString& letters) {
        QList<Track> tracks;
        for (const QChar letter : letters)
            tracks.emplaceBack().name = letter;
        return tracks;
    };
    QFETCH(QString, former);
    QFETCH(QString, present);
    QFETCH(int, index);
    QTEST(ProjectEdits::trackAfter(named(former), named(present), index), "after");
}

void ProjectEditsTest::aNewTrackStandsAboveTheAccompaniment_data()
{
    QTest::addColumn<QList<Track>>("tracks");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("alone") << QList<Track>() << QStringList{"nueva"};
    QTest::newRow("at the end without accompaniment")
        << QList{plain("a"), plain("b")} << QStringList{"a", "b", "nueva"};
    QTest::newRow("between melodies and accompaniment")
        << QList{plain("a"), accompaniment("bombo"), accompaniment("bajo")}
        << QStringList{"a", "nueva", "bombo", "bajo"};
    QTest::newRow("above all where all are accompaniment")
        << QList{accompaniment("bombo"), accompaniment("bajo")}
        << QStringList{"nueva", "bombo", "bajo"};
    QTest::newRow("above the first where melodies stand below it")
        << QList{plain("a"), accompaniment("bombo"), plain("b"), accompaniment("bajo")}
        << QStringList{"a", "nueva", "bombo", "b", "bajo"};
}

void ProjectEditsTest::aNewTrackStandsAboveTheAccompaniment()
{
    QFETCH(QList<Track>, tracks);
    QFETCH(QStringList, names);
    const auto song = project(tracks);
    const qsizetype index = ProjectEdits::addNoteTrack(*song, "nueva");
    QCOMPARE(namesOf(song->tracks), names);
    QCOMPARE(index, names.indexOf("nueva"));
}

void ProjectEditsTest::aNewTrackIsAPianoWithDefaults()
{
    const auto song = project();
    ProjectEdits::addNoteTrack(*song, "Velta 1");
    const Track& added = song->tracks.at(0);
    QCOMPARE(added.name, "Velta 1");
    QCOMPARE(added.instrumentId, "gm_piano");
    QCOMPARE(added.volume, 0.8F);
    QVERIFY(!added.muted && !added.solo && !added.isAccompaniment);
    QCOMPARE(added.layerId, QString());
    QVERIFY(added.loopBlocks.isEmpty());
    QCOMPARE(added.melodyBlocks, (QList{melody({}, 0.0, 32.0)}));
}

void ProjectEditsTest::aNewTrackHasAMelodyAsLongAsTheSong_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("length");
    QTest::newRow("eight bars at least") << TimeSignature{4, 4, false} << 4.0 << 32.0;
    QTest::newRow("as many as the song has") << TimeSignature{4, 4, false} << 41.0 << 44.0;
    QTest::newRow("in 6/8") << TimeSignature{6, 8, true} << 0.0 << 24.0;
    QTest::newRow("in bars without length") << TimeSignature{0, 4, false} << 8.0 << 4.0;
}

void ProjectEditsTest::aNewTrackHasAMelodyAsLongAsTheSong()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, end);
    const auto song = project({melodyTrack({melody({}, 0.0, end)})});
    song->timeSignature = meter;
    ProjectEdits::addNoteTrack(*song, "Velta 2");
    QTEST(song->tracks[1].melodyBlocks[0].durationBeats, "length");
}

void ProjectEditsTest::aNewTrackTakesItsNameAsItIs_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no name") << QString();
    QTest::newRow("blanks") << "  ";
    QTest::newRow("a name that is there already") << "a";
    QTest::newRow("a placeholder") << "%1";
    QTest::newRow("a long name") << QString(10000, QChar(0x00F1));
}

void ProjectEditsTest::aNewTrackTakesItsNameAsItIs()
{
    QFETCH(QString, name);
    const auto song = project({plain("a")});
    ProjectEdits::addNoteTrack(*song, name);
    QCOMPARE(namesOf(song->tracks), (QStringList{"a", name}));
}

void ProjectEditsTest::takingTheNewTrackAwayGivesTheFormerProject()
{
    for (quint32 seed = 0; seed < 200; ++seed) {
        const auto song = Generator(seed, Numbers::AnyFinite).project(6);
        const QJsonObject before = song->toJson();
        const qsizetype index = ProjectEdits::addNoteTrack(*song, "nueva");
        QVERIFY(!song->tracks.at(index).isAccompaniment);
        for (qsizetype above = 0; above < index; ++above)
            QVERIFY(!song->tracks.at(above).isAccompaniment);
        song->tracks.removeAt(index);
        QCOMPARE(song->toJson(), before);
    }
}

// ---- Keys ----------------------------------------------------------------------------------

void ProjectEditsTest::onlyOneIsMinor_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<KeyMode>("expected");
    QTest::newRow("0 is Major") << 0 << KeyMode::Major;
    QTest::newRow("1 is Minor") << 1 << KeyMode::Minor;
    QTest::newRow("the number of Dorian is Major") << 2 << KeyMode::Major;
    QTest::newRow("the number of Lydian is Major") << 3 << KeyMode::Major;
    QTest::newRow("-1 is Major") << -1 << KeyMode::Major;
    QTest::newRow("257 is Major") << 257 << KeyMode::Major;
    QTest::newRow("the largest number is Major")
        << std::numeric_limits<int>::max() << KeyMode::Major;
    QTest::newRow("the least number is Major") << std::numeric_limits<int>::min() << KeyMode::Major;
}

void ProjectEditsTest::onlyOneIsMinor()
{
    QFETCH(int, mode);
    QFETCH(KeyMode, expected);
    for (const KeyMode former :
         {KeyMode::Major, KeyMode::Minor, KeyMode::Dorian, KeyMode::Lydian}) {
        const auto song = project({}, {}, {}, KeySignature{.rootPitchClass = 2, .mode = former});
        ProjectEdits::setKey(*song, 2, mode);
        QCOMPARE(song->keySignature.mode, expected);
    }
}

void ProjectEditsTest::everyRootIsTaken()
{
    const auto song = project();
    for (int root = -2; root < 14; ++root) {
        ProjectEdits::setKey(*song, root, 1);
        QCOMPARE(song->keySignature.rootPitchClass, root);
    }
}

void ProjectEditsTest::aKeyChangesNothingElse()
{
    for (quint32 seed = 0; seed < 100; ++seed) {
        const auto song = Generator(seed).project();
        const auto same = Generator(seed).project();
        ProjectEdits::setKey(*song, 7, 1);
        QCOMPARE(song->keySignature, (KeySignature{.rootPitchClass = 7, .mode = KeyMode::Minor}));
        song->keySignature = same->keySignature;
        QCOMPARE(firstDifference(*song, *same), QString());
    }
}

/// Two bars of 4/4 are eight beats, wherever the bar lines of 3/4 fall among them.
void ProjectEditsTest::anotherMeterCountsTheBarsOfTheChordsAnew()
{
    const TimeSignature waltz{.numerator = 3, .denominator = 4, .isCompound = false};
    const auto song = project({}, harmony({1, 5}));
    ProjectEdits::setMeter(*song, waltz);
    QVERIFY(song->timeSignature == waltz);
    QList<int> degrees;
    for (const double beat : {0.5, 3.5, 4.5, 7.5, 8.5}) {
        const HarmonyDegreeEvent* chord = song->harmonyTrack.eventAt(beat, 3.0);
        degrees.append(chord ? chord->degree : 0);
    }
    QCOMPARE(degrees, (QList<int>{1, 1, 5, 5, 0}));
}

// ---- Loops ---------------------------------------------------------------------------------

void ProjectEditsTest::theRhythmOfAWorkIsThatOfItsEarliestLoop()
{
    Song song;
    QCOMPARE(ProjectEdits::firstRhythm(song), QString());
    song.tracks = {plain("melodía"),
                   loopTrack({loop("zamba", "a", 8.0, 4.0), loop("chacarera", "a", 4.0, 4.0)}),
                   loopTrack({loop("gato", "b", 4.0, 4.0), loop("cueca", "b", 6.0, 4.0)})};
    QCOMPARE(ProjectEdits::firstRhythm(song), "chacarera");
}

void ProjectEditsTest::theLayerOfATrackIsItsOwnOrThatOfItsFirstLoop_data()
{
    QTest::addColumn<QString>("own");
    QTest::addColumn<QList<LoopBlock>>("loops");
    QTest::addColumn<QString>("layer");
    const QList loops{loop("zamba", "bombo", 0.0, 3.0), loop("zamba", "bajo", 3.0, 3.0)};
    QTest::newRow("its own") << "guitarra" << loops << "guitarra";
    QTest::newRow("that of the first loop") << QString() << loops << "bombo";
    QTest::newRow("none") << QString() << QList<LoopBlock>() << QString();
}

void ProjectEditsTest::theLayerOfATrackIsItsOwnOrThatOfItsFirstLoop()
{
    QFETCH(QString, own);
    QFETCH(QList<LoopBlock>, loops);
    Track track = loopTrack(loops);
    track.layerId = own;
    QTEST(ProjectEdits::effectiveLayer(track), "layer");
}

void ProjectEditsTest::aBeatBelongsToTheBarThatHoldsIt_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("beat");
    QTest::addColumn<double>("start");
    const TimeSignature common;
    const TimeSignature compound{.numerator = 6, .denominator = 8, .isCompound = true};
    QTest::newRow("the start of the song") << common << 0.0 << 0.0;
    QTest::newRow("within the first bar") << common << 3.99 << 0.0;
    QTest::newRow("on a bar line") << common << 8.0 << 8.0;
    QTest::newRow("within a later bar") << common << 10.5 << 8.0;
    QTest::newRow("a bar of 6/8 lasts three beats") << compound << 7.0 << 6.0;
    QTest::newRow("no bars at all")
        << TimeSignature{.numerator = 4, .denominator = 0, .isCompound = false} << 7.0 << 0.0;
    QTest::newRow("bars without length")
        << TimeSignature{.numerator = 0, .denominator = 4, .isCompound = false} << 7.0 << 0.0;
}

void ProjectEditsTest::aBeatBelongsToTheBarThatHoldsIt()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, beat);
    const auto song = project();
    song->timeSignature = meter;
    QTEST(ProjectEdits::barStart(*song, beat), "start");
}

void ProjectEditsTest::theSameLoopAtItsPlaceAddsNothing_data()
{
    QTest::addColumn<LoopBlock>("block");
    QTest::addColumn<bool>("there");

    const LoopBlock there = loop("zamba", "bombo", 4.0, 6.0);
    LoopBlock rounded = there;
    rounded.startBeat += 1e-12;
    QTest::newRow("equal") << there << true;
    QTest::newRow("equal but for rounding") << rounded << true;
    QTest::newRow("shorter") << loop("zamba", "bombo", 4.0, 3.0) << true;
    QTest::newRow("longer") << loop("zamba", "bombo", 4.0, 9.0) << false;
    QTest::newRow("a bar later") << loop("zamba", "bombo", 7.0, 6.0) << false;
    QTest::newRow("another variant")
        << loop("zamba", "bombo", 4.0, 6.0, LoopSection::Normal, 2) << false;
    QTest::newRow("another section")
        << loop("zamba", "bombo", 4.0, 6.0, LoopSection::Final) << false;
    QTest::newRow("another rhythm") << loop("cueca", "bombo", 4.0, 6.0) << false;
    QTest::newRow("another layer") << loop("zamba", "bajo", 4.0, 6.0) << false;
}

void ProjectEditsTest::theSameLoopAtItsPlaceAddsNothing()
{
    QFETCH(LoopBlock, block);
    const auto song =
        project({plain("a"),
                 loopTrack({loop("zamba", "bombo", 4.0, 6.0), loop("zamba", "bombo", 40.0, 6.0)})});
    QTEST(ProjectEdits::hasLoop(*song, block), "there");
}

void ProjectEditsTest::theLoopThatAStateLacksIsFound()
{
    const LoopBlock first = loop("r", "bombo", 0.0, 4.0);
    const LoopBlock second = loop("r", "bombo", 4.0, 4.0);
    const LoopBlock other = loop("r", "bajo", 0.0, 4.0);
    const auto lacking = project({plain("a"), loopTrack({first})});
    using ProjectEdits::loopMissingIn;
    QCOMPARE(loopMissingIn(*lacking, *project({plain("a"), loopTrack({first, second})})), second);
    QCOMPARE(
        loopMissingIn(*lacking, *project({plain("a"), loopTrack({first}), loopTrack({other})})),
        other);
    QCOMPARE(loopMissingIn(*project(), *project({loopTrack({first})})), first);
    QVERIFY(!loopMissingIn(*lacking, *lacking));
    QVERIFY(!loopMissingIn(*lacking, *project()));
    QVERIFY(!loopMissingIn(*lacking, *project({loopTrack({first, second, other})})));
    QVERIFY(!loopMissingIn(*lacking, *project({loopTrack({second, other})})));
}

void ProjectEditsTest::aLoopOfANewLayerMakesATrackAtTheEnd()
{
    const auto song = project({plain("a"), accompaniment("b")});
    const LoopBlock block = loop("zamba", "bombo", 4.0, 3.0);
    const auto index = ProjectEdits::addLoop(*song, block, "gm_bateria", "Zamba · Bombo");
    QCOMPARE(index, 2);
    Track expected = accompaniment("Zamba · Bombo");
    expected.instrumentId = "gm_bateria";
    expected.layerId = "bombo";
    expected.loopBlocks = {block};
    QCOMPARE(song->tracks.at(2), expected);
}

void ProjectEditsTest::loopsOfOneLayerGatherOnOneTrack()
{
    const auto song = project();
    const LoopBlock first = loop("zamba", "bombo", 0.0, 3.0);
    const LoopBlock overlapping = loop("cueca", "bombo", 1.0, 6.0);
    QCOMPARE(ProjectEdits::addLoop(*song, first, "gm_bateria", "Zamba · Bombo"), 0);
    QCOMPARE(ProjectEdits::addLoop(*song, overlapping, "gm_piano", "Cueca · Bombo"), 0);
    QCOMPARE(song->tracks.size(), 1);
    QCOMPARE(song->tracks.at(0).name, "Zamba · Bombo");
    QCOMPARE(song->tracks.at(0).instrumentId, "gm_bateria");
    QCOMPARE(song->tracks.at(0).loopBlocks, (QList{first, overlapping}));
}

void ProjectEditsTest::aLoopGoesToTheFirstTrackOfItsLayer_data()
{
    QTest::addColumn<QList<Track>>("tracks");
    QTest::addColumn<int>("index");
    Track bombo = accompaniment("bombo");
    bombo.layerId = "bombo";
    Track byLoop = accompaniment("por su velta");
    byLoop.loopBlocks = {loop("zamba", "bombo", 0.0, 3.0)};
    Track melody = plain("melodía");
    melody.layerId = "bombo";
    Track other = accompaniment("otra");
    other.layerId = "Bombo";
    QTest::newRow("by its layer") << QList{bombo, bombo} << 0;
    QTest::newRow("by its first loop") << QList{byLoop, bombo} << 0;
    QTest::newRow("past tracks that are no accompaniment") << QList{melody, bombo} << 1;
    QTest::newRow("past layers of another case") << QList{other, bombo} << 1;
    QTest::newRow("past tracks without a layer") << QList{accompaniment("sin"), bombo} << 1;
}

void ProjectEditsTest::aLoopGoesToTheFirstTrackOfItsLayer()
{
    QFETCH(QList<Track>, tracks);
    const auto song = project(tracks);
    const auto index = ProjectEdits::addLoop(*song, loop("r", "bombo", 0.0, 3.0), "gm_piano", "x");
    QVERIFY(index.has_value());
    QTEST(static_cast<int>(*index), "index");
    QCOMPARE(song->tracks.size(), tracks.size());
}

void ProjectEditsTest::aTrackTakesTheLayerOfItsLoops()
{
    Track byLoop = accompaniment("por su velta");
    byLoop.loopBlocks = {loop("zamba", "bombo", 0.0, 3.0)};
    const auto song = project({byLoop});
    ProjectEdits::addLoop(*song, loop("zamba", "bombo", 3.0, 3.0), "gm_piano", "x");
    QCOMPARE(song->tracks.at(0).layerId, "bombo");
}

void ProjectEditsTest::aFullListTakesLoopsOfItsOwnLayersOnly()
{
    Track bombo = accompaniment("bombo");
    bombo.layerId = "bombo";
    QList<Track> tracks(kMaxNoteTracks - 1, plain("a"));
    tracks.append(bombo);
    const auto song = project(tracks);
    const QJsonObject before = song->toJson();
    QVERIFY(!ProjectEdits::addLoop(*song, loop("r", "bajo", 0.0, 3.0), "gm_bajo", "x"));
    QCOMPARE(song->toJson(), before);
    QCOMPARE(ProjectEdits::addLoop(*song, loop("r", "bombo", 0.0, 3.0), "gm_bajo", "x"),
             kMaxNoteTracks - 1);
    QCOMPARE(song->tracks.last().loopBlocks.size(), 1);
}

// ---- Takes ---------------------------------------------------------------------------------

void ProjectEditsTest::aTakeGoesToTheLastVoiceTrack()
{
    Project project;
    ProjectEdits::addClip(project, "Voz", clip("uno.wav"));
    QCOMPARE(project.audioTracks.size(), 1);
    QCOMPARE(project.audioTracks[0].name, "Voz");
    QCOMPARE(project.audioTracks[0].clips, QList{clip("uno.wav")});

    project.audioTracks.append(voiceTrack({clip("dos.wav")}));
    ProjectEdits::addClip(project, "Otra", clip("tres.wav"));
    QCOMPARE(project.audioTracks.size(), 2);
    QCOMPARE(project.audioTracks[0].clips, QList{clip("uno.wav")});
    QCOMPARE(project.audioTracks[1].clips, (QList{clip("dos.wav"), clip("tres.wav")}));
}

void ProjectEditsTest::nothingIsAnnounced()
{
    const auto song = project();
    const QSignalSpy changed(song.get(), &Project::changed);
    ProjectEdits::addNoteTrack(*song, "nueva");
    ProjectEdits::setKey(*song, 3, 1);
    ProjectEdits::addLoop(*song, loop("r", "bombo", 0.0, 3.0), "gm_bateria", "x");
    QCOMPARE(changed.count(), 0);
}

void ProjectEditsTest::anEmptyBlockToWriteInIsNoDifference()
{
    Song former;
    former.tracks = {melodyTrack({}), melodyTrack({melody({note(60, 0.0)})})};
    Song present = former;
    QVERIFY(ProjectEdits::isSameWork(former, present));
    present.tracks[0].melodyBlocks = {melody({})};
    QVERIFY(ProjectEdits::isSameWork(former, present));
    present.tracks[0].melodyBlocks[0].notes = {note(60, 0.0)};
    QVERIFY(!ProjectEdits::isSameWork(former, present));
}

void ProjectEditsTest::everyOtherChangeIsADifference()
{
    Song former;
    former.tracks = {melodyTrack({}), melodyTrack({melody({note(60, 0.0)})})};
    const auto differs = [&](auto change) {
        Song present = former;
        change(present);
        return !ProjectEdits::isSameWork(former, present);
    };
    QVERIFY(differs([](Song& song) { song.name = "Zamba"; }));
    QVERIFY(differs([](Song& song) { song.bpm = 90; }));
    QVERIFY(differs([](Song& song) { song.harmonyTrack.volume = 0.5F; }));
    QVERIFY(differs([](Song& song) { song.tracks[0].volume = 0.5F; }));
    QVERIFY(differs([](Song& song) { song.tracks.removeLast(); }));
    QVERIFY(differs([](Song& song) { song.tracks.append(melodyTrack({})); }));
    QVERIFY(differs([](Song& song) { song.tracks[1].melodyBlocks.append(melody({})); }));
    QVERIFY(differs([](Song& song) { song.tracks[1].melodyBlocks = {melody({})}; }));
    QVERIFY(differs([](Song& song) { song.tracks[0].melodyBlocks = {melody({}), melody({})}; }));
}

// ---- Removing ------------------------------------------------------------------------------

void ProjectEditsTest::theTrackOfAnIndexIsRemoved_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("the first") << 0 << QStringList{"b", "c"};
    QTest::newRow("the last") << 2 << QStringList{"a", "b"};
    QTest::newRow("none behind the last") << 3 << QStringList{"a", "b", "c"};
    QTest::newRow("none before the first") << -1 << QStringList{"a", "b", "c"};
}

void ProjectEditsTest::theTrackOfAnIndexIsRemoved()
{
    QFETCH(int, index);
    QFETCH(QStringList, left);
    Project song;
    for (const char* name : {"a", "b", "c"}) {
        song.tracks.append(Track());
        song.tracks.last().name = name;
        song.audioTracks.append(AudioTrack());
        song.audioTracks.last().name = name;
    }
    QCOMPARE(ProjectEdits::removeNoteTrack(song, index), left.size() < 3);
    QCOMPARE(ProjectEdits::removeAudioTrack(song, index), left.size() < 3);
    QStringList notes;
    QStringList voices;
    for (const Track& track : song.tracks)
        notes.append(track.name);
    for (const AudioTrack& track : song.audioTracks)
        voices.append(track.name);
    QCOMPARE(notes, left);
    QCOMPARE(voices, left);
}

VELTA_GUILESS_TEST(ProjectEditsTest)

} // namespace ProjectEditsTests

#include "ProjectEditsTest.moc"
