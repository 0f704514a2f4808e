#include "playback/Schedule.h"

#include "playback/NoteRenderer.h"
#include "support/ContentFixture.h"
#include "support/Exact.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QTest>

#include <algorithm>
#include <tuple>

namespace ScheduleTests {

using namespace ProjectBuilder;

namespace {

using Events = QList<ScheduledEvent>;

ScheduledEvent on(double beat, int pitch, int channel = 0, int velocity = 100)
{
    return {.beat = beat, .noteOn = true, .channel = channel, .pitch = pitch, .velocity = velocity};
}

ScheduledEvent off(double beat, int pitch, int channel = 0)
{
    return {.beat = beat, .noteOn = false, .channel = channel, .pitch = pitch, .velocity = 0};
}

/// The events of some notes on channel 0, as they are appended.
Events appended(const QList<NoteEvent>& notes)
{
    Events events;
    double end = 0.0;
    Schedule::appendNotes(events, notes, 0, end);
    return events;
}

Events sorted(Events events)
{
    Schedule::sort(events);
    return events;
}

/// The rule by which notes become events, note by note.
void appendPlainly(Events& events, const QList<NoteEvent>& notes, int channel, double& end)
{
    for (const NoteEvent& note : notes) {
        double release = note.startBeat + std::max(note.durationBeats, 0.05);
        for (const NoteEvent& other : notes) {
            if (other.pitch == note.pitch && other.startBeat > note.startBeat)
                release = std::min(release, other.startBeat);
        }
        events.append(on(note.startBeat, note.pitch, channel, note.velocity));
        events.append(off(release, note.pitch, channel));
        end = std::max(end, note.startBeat + note.durationBeats);
    }
}

/// One order for lists of equal events.
Events settled(Events events)
{
    const auto key = [](const ScheduledEvent& event) {
        return std::tuple(event.beat, event.noteOn, event.channel, event.pitch, event.velocity);
    };
    std::sort(events.begin(), events.end(),
              [&](const auto& a, const auto& b) { return key(a) < key(b); });
    return events;
}

/// A track without humanizing that plays some notes.
Track trackOf(const QList<NoteEvent>& notes)
{
    return straight(melodyTrack({melody(notes, 0.0, 1000.0)}));
}

Score scoreOf(const Project& song, bool anySolo = false, const LoopLibrary* library = nullptr)
{
    Score score;
    Schedule::appendSong(score, song, library, anySolo);
    return score;
}

/// Channels that have events, in the order of their first.
QList<int> channelsOf(const Score& score)
{
    QList<int> channels;
    for (const ScheduledEvent& event : score.events) {
        if (!channels.contains(event.channel))
            channels.append(event.channel);
    }
    return channels;
}

/// A package with one layer of one note at the start of a one-bar variant.
QByteArray oneNotePackage()
{
    return R"({"rhythm": {"id": "r"}, "loopLayers": [{"id": "l"}],
        "loopVariants": [{"layerId": "l", "section": "Normal", "variantIndex": 1,
                          "durationBars": 1, "notes": [{"pitch": 64}]}]})";
}

} // namespace

class ScheduleTest : public QObject {
    Q_OBJECT

private slots:
    void noteBecomesTwoEvents();
    void notesAreAppendedInOrder();
    void valuesAreTakenAsTheyStand();
    void noteOffComesAtLeastATwentiethOfABeatLater_data();
    void noteOffComesAtLeastATwentiethOfABeatLater();
    void endIsRaisedToTheWrittenEnd_data();
    void endIsRaisedToTheWrittenEnd();
    void endIsTheLatestOfAll();
    void noNotesChangeNothing();

    void eventsAscendByBeat();
    void noteOffGoesFirstAtOneBeat();
    void beatsAreComparedExactly();
    void repeatedPitchIsReleasedBeforeItStartsAgain();
    void noteShorterThanTheFloorEndsWhereTheNextStarts();
    void noteEndsNoLaterThanTheNextOnItsPitchStarts_data();
    void noteEndsNoLaterThanTheNextOnItsPitchStarts();
    void channelsDoNotEndOneAnother();
    void humanizedRepeatedNotesAllSound();
    void everyNoteEndsByTheRule();
    void sortingKeepsEveryEvent();

    void emptySongHasNoEvents();
    void tracksStandOnTheirChannelsAndTheChordsBehind();
    void songEndsWithItsLastNote();
    void songIsAppendedToWhatThereIs();
    void mutedTracksAndChordsAreLeftOut();
    void soloIsHeededAsItIsTold();
    void onlyThirteenTracksHaveChannels();
    void trackThatCutsTheSongEndsIt();
    void songOfTooManyNotesIsCut();
    void songIsWhatTheRendererGives();
};

void ScheduleTest::noteBecomesTwoEvents()
{
    Events events;
    double end = 0.0;
    Schedule::appendNotes(events, {note(64, 2.5, 1.25, 90)}, 7, end);
    QCOMPARE(events, (Events{on(2.5, 64, 7, 90), off(3.75, 64, 7)}));
    QCOMPARE(end, 3.75);
}

void ScheduleTest::notesAreAppendedInOrder()
{
    Events events{on(9.0, 1)};
    double end = 0.0;
    Schedule::appendNotes(events, {note(60, 4.0), note(62, 0.0)}, 0, end);
    QCOMPARE(events, (Events{on(9.0, 1), on(4.0, 60), off(5.0, 60), on(0.0, 62), off(1.0, 62)}));
}

void ScheduleTest::valuesAreTakenAsTheyStand()
{
    Events events;
    double end = 0.0;
    Schedule::appendNotes(events, {note(-5, -2.0, 1.0, 0), note(300, 0.0, 1.0, 999)}, 15, end);
    QCOMPARE(events, (Events{on(-2.0, -5, 15, 0), off(-1.0, -5, 15), on(0.0, 300, 15, 999),
                             off(1.0, 300, 15)}));
}

void ScheduleTest::noteOffComesAtLeastATwentiethOfABeatLater_data()
{
    QTest::addColumn<double>("duration");
    QTest::addColumn<double>("beat");
    QTest::newRow("a length of 0") << 0.0 << 2.05;
    QTest::newRow("a length below the floor") << 0.049 << 2.05;
    QTest::newRow("a length of the floor") << 0.05 << 2.05;
    QTest::newRow("a length above the floor") << 0.0625 << 2.0625;
    QTest::newRow("a negative length") << -3.0 << 2.05;
}

void ScheduleTest::noteOffComesAtLeastATwentiethOfABeatLater()
{
    QFETCH(double, duration);
    QFETCH(double, beat);
    QCOMPARE(exact(appended({note(60, 2.0, duration)}).last().beat), exact(beat));
}

void ScheduleTest::endIsRaisedToTheWrittenEnd_data()
{
    QTest::addColumn<double>("duration");
    QTest::addColumn<double>("before");
    QTest::addColumn<double>("after");
    QTest::newRow("a longer note raises it") << 4.0 << 3.0 << 6.0;
    QTest::newRow("a shorter note does not lower it") << 4.0 << 9.0 << 9.0;
    QTest::newRow("a note of length 0 reaches its own start") << 0.0 << 0.0 << 2.0;
    QTest::newRow("the floor of a twentieth does not count") << 0.01 << 0.0 << 2.01;
    QTest::newRow("a negative length ends before its start") << -1.0 << 0.0 << 1.0;
}

void ScheduleTest::endIsRaisedToTheWrittenEnd()
{
    QFETCH(double, duration);
    QFETCH(double, before);
    QFETCH(double, after);
    Events events;
    double end = before;
    Schedule::appendNotes(events, {note(60, 2.0, duration)}, 0, end);
    QCOMPARE(exact(end), exact(after));
}

void ScheduleTest::endIsTheLatestOfAll()
{
    Events events;
    double end = 0.0;
    Schedule::appendNotes(events, {note(60, 0.0, 12.0), note(62, 8.0, 1.0)}, 0, end);
    Schedule::appendNotes(events, {note(60, 10.0, 1.0)}, 1, end);
    QCOMPARE(end, 12.0);
}

void ScheduleTest::noNotesChangeNothing()
{
    Events events{on(1.0, 60)};
    double end = 3.5;
    Schedule::appendNotes(events, {}, 4, end);
    QCOMPARE(events, Events{on(1.0, 60)});
    QCOMPARE(end, 3.5);
    QVERIFY(sorted({}).isEmpty());
}

void ScheduleTest::eventsAscendByBeat()
{
    QCOMPARE(sorted({on(3.0, 60), off(1.0, 61), on(-2.0, 62), on(0.5, 63)}),
             (Events{on(-2.0, 62), on(0.5, 63), off(1.0, 61), on(3.0, 60)}));
}

void ScheduleTest::noteOffGoesFirstAtOneBeat()
{
    const Events events = sorted({on(1.0, 60, 0), off(1.0, 72, 3), on(1.0, 61, 1), off(1.0, 50, 2),
                                  on(0.5, 70), off(1.5, 40)});
    QCOMPARE(events.first(), on(0.5, 70));
    QVERIFY(!events[1].noteOn && !events[2].noteOn);
    QVERIFY(events[3].noteOn && events[4].noteOn);
    QCOMPARE(events.last(), off(1.5, 40));
}

void ScheduleTest::beatsAreComparedExactly()
{
    const double later = std::nextafter(1.0, 2.0);
    QCOMPARE(sorted({off(later, 60), on(1.0, 60)}), (Events{on(1.0, 60), off(later, 60)}));
}

void ScheduleTest::repeatedPitchIsReleasedBeforeItStartsAgain()
{
    QCOMPARE(sorted(appended({note(60, 1.0, 1.0), note(60, 0.0, 1.0)})),
             (Events{on(0.0, 60), off(1.0, 60), on(1.0, 60), off(2.0, 60)}));
}

void ScheduleTest::noteShorterThanTheFloorEndsWhereTheNextStarts()
{
    QCOMPARE(sorted(appended({note(60, 0.0, 0.03125), note(60, 0.03125, 1.0)})),
             (Events{on(0.0, 60), off(0.03125, 60), on(0.03125, 60), off(1.03125, 60)}));
}

void ScheduleTest::noteEndsNoLaterThanTheNextOnItsPitchStarts_data()
{
    using Notes = QList<NoteEvent>;
    QTest::addColumn<Notes>("notes");
    QTest::addColumn<QList<double>>("ends");
    QTest::newRow("the next starts before its end")
        << Notes{note(60, 0.0, 1.0), note(60, 0.96875, 1.0)} << QList<double>{0.96875, 1.96875};
    QTest::newRow("the next starts on its end")
        << Notes{note(60, 0.0, 1.0), note(60, 1.0, 1.0)} << QList<double>{1.0, 2.0};
    QTest::newRow("the next starts behind its end")
        << Notes{note(60, 0.0, 1.0), note(60, 1.5, 1.0)} << QList<double>{1.0, 2.5};
    QTest::newRow("another pitch does not end it")
        << Notes{note(60, 0.0, 1.0), note(61, 0.5, 1.0)} << QList<double>{1.0, 1.5};
    QTest::newRow("a note within it ends it for good")
        << Notes{note(60, 0.0, 8.0), note(60, 2.0, 1.0)} << QList<double>{2.0, 3.0};
    QTest::newRow("each ends at the one behind it")
        << Notes{note(60, 0.0, 8.0), note(60, 2.0, 8.0), note(60, 3.0, 8.0)}
        << QList<double>{2.0, 3.0, 11.0};
    QTest::newRow("notes that start together keep their ends")
        << Notes{note(60, 1.0, 1.0), note(60, 1.0, 3.0)} << QList<double>{2.0, 4.0};
    QTest::newRow("notes that start together end at the next")
        << Notes{note(60, 1.0, 1.0), note(60, 1.0, 3.0), note(60, 2.5, 1.0)}
        << QList<double>{2.0, 2.5, 3.5};
    QTest::newRow("the order of the list does not count")
        << Notes{note(60, 2.0, 1.0), note(62, 0.0, 1.0), note(60, 0.0, 8.0)}
        << QList<double>{3.0, 1.0, 2.0};
    QTest::newRow("the floor gives way to the next start")
        << Notes{note(60, 0.0, 0.0), note(60, 0.015625, 0.0)} << QList<double>{0.015625, 0.065625};
}

void ScheduleTest::noteEndsNoLaterThanTheNextOnItsPitchStarts()
{
    QFETCH(QList<NoteEvent>, notes);
    QFETCH(QList<double>, ends);
    QList<double> offs;
    for (const ScheduledEvent& event : appended(notes)) {
        if (!event.noteOn)
            offs.append(event.beat);
    }
    QCOMPARE(offs.size(), ends.size());
    for (qsizetype i = 0; i < ends.size(); ++i)
        QCOMPARE(exact(offs.at(i)), exact(ends.at(i)));
}

void ScheduleTest::channelsDoNotEndOneAnother()
{
    Events events;
    double end = 0.0;
    Schedule::appendNotes(events, {note(60, 0.0, 4.0)}, 0, end);
    Schedule::appendNotes(events, {note(60, 1.0, 1.0)}, 1, end);
    QCOMPARE(events, (Events{on(0.0, 60, 0), off(4.0, 60, 0), on(1.0, 60, 1), off(2.0, 60, 1)}));
}

void ScheduleTest::humanizedRepeatedNotesAllSound()
{
    // Quarter notes on one pitch, as the piano roll writes them, with what a new track has.
    for (quint32 seed = 0; seed < 200; ++seed) {
        Track track = melodyTrack({melody({}, 0.0, 64.0)});
        QVERIFY(track.humanize.enabled);
        track.humanize.seed = seed;
        for (int i = 0; i < 64; ++i)
            track.melodyBlocks[0].notes.append(note(60, i));
        const Events events = sorted(scoreOf(*project({track})).events);
        QCOMPARE(events.size(), 128);
        for (qsizetype i = 0; i < events.size(); ++i)
            QCOMPARE(events[i].noteOn, i % 2 == 0);
    }
}

void ScheduleTest::sortingKeepsEveryEvent()
{
    ProjectBuilder::Generator generator(17);
    for (int round = 0; round < 300; ++round) {
        Events events;
        double end = 0.0;
        for (int channel = 0; channel < 4; ++channel) {
            QList<NoteEvent> notes;
            for (int i = 0; i < 30; ++i)
                notes.append(generator.note());
            Schedule::appendNotes(events, notes, channel, end);
        }
        const Events ordered = sorted(events);
        QCOMPARE(settled(ordered), settled(events));
        for (qsizetype i = 1; i < ordered.size(); ++i) {
            const ScheduledEvent& before = ordered[i - 1];
            const ScheduledEvent& after = ordered[i];
            QVERIFY(before.beat < after.beat ||
                    (before.beat == after.beat && (!before.noteOn || after.noteOn)));
        }
        QVERIFY(ordered.last().beat <= end + NoteRenderer::kMinNoteBeats);
    }
}

void ScheduleTest::everyNoteEndsByTheRule()
{
    ProjectBuilder::Generator generator(23);
    qsizetype shortened = 0;
    for (int round = 0; round < 400; ++round) {
        QList<NoteEvent> notes;
        for (int i = 0; i < 40; ++i) {
            notes.append(generator.note());
            notes.last().pitch = 60 + notes.last().pitch % 4;
        }
        Events expected;
        double end = 0.0;
        appendPlainly(expected, notes, 0, end);
        QCOMPARE(appended(notes), expected);
        for (qsizetype i = 0; i < notes.size(); ++i)
            shortened += expected[2 * i + 1].beat < notes[i].startBeat + notes[i].durationBeats;
    }
    QVERIFY(shortened > 1000);
}

// ---- Whole songs ---------------------------------------------------------------------------

void ScheduleTest::emptySongHasNoEvents()
{
    Score score;
    QVERIFY(Schedule::appendSong(score, Project(), nullptr, false));
    QVERIFY(score.events.isEmpty());
    QCOMPARE(score.end, 0.0);
}

void ScheduleTest::tracksStandOnTheirChannelsAndTheChordsBehind()
{
    const auto song =
        project({trackOf({note(60, 2.0, 1.0, 90)}), trackOf({note(70, 0.0)})}, harmony({0, 5}));
    QCOMPARE(scoreOf(*song).events,
             (Events{on(2.0, 60, 0, 90), off(3.0, 60, 0), on(0.0, 70, 1), off(1.0, 70, 1),
                     on(4.0, 55, 15, 72), off(8.0, 55, 15), on(4.0, 59, 15, 72), off(8.0, 59, 15),
                     on(4.0, 62, 15, 72), off(8.0, 62, 15)}));
}

void ScheduleTest::songEndsWithItsLastNote()
{
    QCOMPARE(scoreOf(*project({trackOf({note(60, 2.0, 7.5)})}, harmony({1}))).end, 9.5);
    QCOMPARE(scoreOf(*project({trackOf({note(60, 2.0, 1.0)})}, harmony({1, 1}))).end, 8.0);
    // The end of a block without notes is none of theirs.
    QCOMPARE(scoreOf(*project({trackOf({})})).end, 0.0);
}

void ScheduleTest::songIsAppendedToWhatThereIs()
{
    Score score{.events = {on(9.0, 1)}, .end = 40.0};
    QVERIFY(Schedule::appendSong(score, *project({trackOf({note(60, 0.0)})}), nullptr, false));
    QCOMPARE(score.events, (Events{on(9.0, 1), on(0.0, 60), off(1.0, 60)}));
    QCOMPARE(score.end, 40.0);
}

void ScheduleTest::mutedTracksAndChordsAreLeftOut()
{
    const auto song = project({trackOf({note(60, 0.0)}), trackOf({note(62, 0.0)})}, harmony({1}));
    song->tracks[0].muted = true;
    QCOMPARE(channelsOf(scoreOf(*song)), QList<int>({1, 15}));
    song->harmonyTrack.muted = true;
    QCOMPARE(channelsOf(scoreOf(*song)), QList<int>{1});
}

void ScheduleTest::soloIsHeededAsItIsTold()
{
    const auto song = project({trackOf({note(60, 0.0)}), trackOf({note(62, 0.0)})}, harmony({1}));
    song->tracks[1].solo = true;
    QCOMPARE(channelsOf(scoreOf(*song, true)), QList<int>({1, 15}));
    QCOMPARE(channelsOf(scoreOf(*song, false)), QList<int>({0, 1, 15}));
    song->tracks[1].muted = true;
    QCOMPARE(channelsOf(scoreOf(*song, true)), QList<int>{15});
}

void ScheduleTest::onlyThirteenTracksHaveChannels()
{
    QList<Track> tracks;
    for (int i = 0; i < 20; ++i)
        tracks.append(trackOf({note(40 + i, 0.0, 1.0 + i)}));
    const Score score = scoreOf(*project(tracks));
    QCOMPARE(channelsOf(score), QList<int>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    QCOMPARE(score.events.last().pitch, 52);
    QCOMPARE(score.end, 13.0);
}

void ScheduleTest::trackThatCutsTheSongEndsIt()
{
    ContentFixture content;
    content.addPackage("r", oneNotePackage());
    content.library().reload();
    const Track endless = straight(loopTrack({loop("r", "l", 0.0, 1e300)}));
    const auto song =
        project({trackOf({note(60, 0.0)}), endless, trackOf({note(62, 0.0)})}, harmony({1}));
    Score score;
    QVERIFY(!Schedule::appendSong(score, *song, &content.library(), false));
    QCOMPARE(channelsOf(score), QList<int>({0, 1}));
    QVERIFY(score.events.size() <= 2 * (NoteRenderer::kMaxTrackNotes + 1));
}

void ScheduleTest::songOfTooManyNotesIsCut()
{
    ContentFixture content;
    content.addPackage("r", oneNotePackage());
    content.library().reload();
    // Each track is within the bound of a track: a note a bar.
    constexpr int kBars = NoteRenderer::kMaxTrackNotes;
    const Track full = straight(loopTrack({loop("r", "l", 0.0, 4.0 * kBars)}));
    const auto song = project(QList<Track>(4, full) + QList<Track>(2, trackOf({note(60, 0.0)})));
    Score score;
    QVERIFY(!Schedule::appendSong(score, *song, &content.library(), false));
    QCOMPARE(score.events.size(), 2 * (NoteRenderer::kMaxSongNotes + 1));
}

void ScheduleTest::songIsWhatTheRendererGives()
{
    ContentFixture content;
    content.addPackage("r", oneNotePackage());
    content.library().reload();
    qsizetype events = 0;
    for (quint32 seed = 0; seed < 200; ++seed) {
        const auto song = Generator(seed).project();
        for (Track& track : song->tracks)
            track.loopBlocks.append(loop("r", "l", 2.0, 9.5));
        Events expected;
        double end = 0.0;
        for (int i = 0; i < song->tracks.size(); ++i) {
            const Track& track = song->tracks[i];
            if (!track.muted)
                appendPlainly(expected, NoteRenderer::trackNotes(*song, track, &content.library()),
                              i, end);
        }
        if (!song->harmonyTrack.muted)
            appendPlainly(expected, NoteRenderer::harmonyNotes(*song), 15, end);
        const Score score = scoreOf(*song, false, &content.library());
        QCOMPARE(score.events, expected);
        QCOMPARE(exact(score.end), exact(end));
        events += score.events.size();
    }
    QVERIFY(events > 1000);
}

VELTA_GUILESS_TEST(ScheduleTest)

} // namespace ScheduleTests

#include "ScheduleTest.moc"
