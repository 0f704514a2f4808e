#include "listen/NoteRows.h"

#include "model/Track.h"
#include "support/ContentFixture.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QTest>

namespace NoteRowsTests {

using namespace ProjectBuilder;

class NoteRowsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void notesHaveARowForEverySemitone();
    void aGapOfMoreThanAnOctaveIsNotDrawn();
    void drumsHaveARowEachAndTheirNames();
    void noisesOfTheRecordedGuitarShareTheirRow();

private:
    ContentFixture content_;
};

void NoteRowsTest::initTestCase()
{
    const Rhythm zamba{.id = "zamba",
                       .displayName = {},
                       .styleId = {},
                       .timeSignature = {},
                       .grooveTemplateId = {}};
    const QList layers{LoopLayer{.id = "bombo",
                                 .rhythmId = "zamba",
                                 .label = "Bombo",
                                 .instrumentId = {},
                                 .pitched = false}};
    content_.addPackage("zamba", packageText(zamba, layers, {}));
    content_.library().reload();
}

void NoteRowsTest::notesHaveARowForEverySemitone()
{
    const NoteRows rows = NoteRows::of(Track(), {note(60, 0.0), note(63, 1.0), note(60, 2.0)},
                                       content_.library(), {});
    QCOMPARE(rows.pitches, (QList<int>{63, 62, 61, 60}));
    QCOMPARE(rows.names, (QList<QString>{"D#4", "D4", "C#4", "C4"}));
}

void NoteRowsTest::aGapOfMoreThanAnOctaveIsNotDrawn()
{
    const NoteRows rows =
        NoteRows::of(Track(), {note(60, 0.0), note(30, 1.0)}, content_.library(), {});
    QCOMPARE(rows.pitches, (QList<int>{60, 30}));
}

void NoteRowsTest::drumsHaveARowEachAndTheirNames()
{
    Track track;
    track.layerId = "bombo";
    const NoteRows rows =
        NoteRows::of(track, {note(36, 0.0), note(41, 1.0)}, content_.library(), {{36, "bombo"}});
    QCOMPARE(rows.pitches, (QList<int>{41, 36}));
    QCOMPARE(rows.names, (QList<QString>{"41", "bombo"}));
}

void NoteRowsTest::noisesOfTheRecordedGuitarShareTheirRow()
{
    Track track;
    track.instrumentId = "guitarra_criolla";
    const QList<NoteEvent> drawn = drawnNotes(
        track, {note(0, 0.0), note(12, 1.0), note(22, 2.0), note(38, 3.0), note(45, 4.0)});
    const NoteRows rows = NoteRows::of(track, drawn, content_.library(), {});
    QCOMPARE(rows.names.last(), "golpe");
    QCOMPARE(rows.names.count("golpe"), 1);
    QCOMPARE(rows.names.first(), "A2");
    QVERIFY(rows.names.contains("chasquido"));
    QCOMPARE(drawnNotes(Track(), {note(22, 0.0)}).first().pitch, 22);
}

VELTA_GUILESS_TEST(NoteRowsTest)

} // namespace NoteRowsTests

#include "NoteRowsTest.moc"
