#include "shell/sheet/SongSheet.h"

#include "model/Project.h"
#include "support/ProjectBuilder.h"

#include <QTest>

#include <limits>

using namespace ProjectBuilder;

namespace {

/// "0.5 Do" for each word, with its place in the bar.
QStringList written(const QList<SheetWord>& words)
{
    QStringList lines;
    for (const SheetWord& word : words)
        lines.append(QString::number(word.place) + ' ' + word.text);
    return lines;
}

} // namespace

class SongSheetTest : public QObject {
    Q_OBJECT

private slots:
    void theHeadTellsNameKeyTempoAndMeter();
    void chordsStandInTheirBarsWithDegreeAndName();
    void notesStandUnderThemByTheirNames();
    void notesThatBeginTogetherAreOneWord();
    void eachMelodyIsALineOfItsOwn();
    void whatIsMutedIsWrittenToo();
    void notesBehindTheEndOfTheirBlockAreNotWritten();
    void theSheetIsAsLongAsTheSong_data();
    void theSheetIsAsLongAsTheSong();
    void compoundMetersHaveTheirBars();
    void damagedSongsHaveASheet_data();
    void damagedSongsHaveASheet();
};

void SongSheetTest::theHeadTellsNameKeyTempoAndMeter()
{
    const auto song = project({}, {}, {6, 8, true}, {9, KeyMode::Minor}, 96);
    song->name = "Zamba de mi escuela";
    const SongSheet sheet = SongSheet::of(*song);
    QCOMPARE(sheet.title, QString("Zamba de mi escuela"));
    QCOMPARE(sheet.heading, QStringLiteral("La menor · ♩ = 96 · 6/8"));
}

void SongSheetTest::chordsStandInTheirBarsWithDegreeAndName()
{
    const auto song = project({}, harmony({1, 4, 6}));
    song->harmonyTrack.blocks[1].events = {chord(4, 0.0, 2.0),
                                           chord(5, 2.0, 2.0, ChordExtension::Seventh)};
    const SongSheet sheet = SongSheet::of(*song);
    QCOMPARE(sheet.bars.size(), 3);
    QCOMPARE(written(sheet.bars[0].chords), QStringList{QStringLiteral("0 I · Do")});
    QCOMPARE(written(sheet.bars[1].chords),
             (QStringList{QStringLiteral("0 IV · Fa"), QStringLiteral("0.5 V7 · Sol7")}));
    QCOMPARE(written(sheet.bars[2].chords), QStringList{QStringLiteral("0 vi · Lam")});
}

void SongSheetTest::notesStandUnderThemByTheirNames()
{
    const auto song =
        project({melodyTrack({melody({note(60, 0.0), note(66, 1.5), note(67, 5.0)}, 0.0, 8.0),
                              melody({note(72, 0.0)}, 8.0)})});
    const SongSheet sheet = SongSheet::of(*song);
    QCOMPARE(sheet.bars.size(), 3);
    QCOMPARE(written(sheet.bars[0].melodies[0]), (QStringList{"0 Do", "0.375 Fa#"}));
    QCOMPARE(written(sheet.bars[1].melodies[0]), QStringList{"0.25 Sol"});
    QCOMPARE(written(sheet.bars[2].melodies[0]), QStringList{"0 Do"});
}

void SongSheetTest::notesThatBeginTogetherAreOneWord()
{
    const auto song = project(
        {melodyTrack({melody({note(67, 1.0), note(60, 1.0), note(64, 1.0), note(60, 2.0)})})});
    QCOMPARE(written(SongSheet::of(*song).bars[0].melodies[0]),
             (QStringList{"0.25 Do+Mi+Sol", "0.5 Do"}));
}

void SongSheetTest::eachMelodyIsALineOfItsOwn()
{
    Track quena = melodyTrack({melody({note(60, 0.0)})});
    quena.name = "Quena";
    Track empty = melodyTrack({melody({})});
    Track flute = melodyTrack({melody({note(64, 0.0)}, 4.0)});
    flute.name = "Flauta";
    Track loops = loopTrack({loop("r", "bajo", 0.0, 8.0)});
    loops.melodyBlocks = {melody({note(40, 0.0)})};
    const SongSheet sheet = SongSheet::of(*project({quena, empty, loops, flute}));
    QCOMPARE(sheet.melodies, (QList<QString>{"Quena", "Flauta"}));
    QCOMPARE(sheet.bars.size(), 2);
    for (const SheetBar& bar : sheet.bars)
        QCOMPARE(bar.melodies.size(), 2);
    QCOMPARE(written(sheet.bars[1].melodies[0]), QStringList());
    QCOMPARE(written(sheet.bars[1].melodies[1]), QStringList{"0 Mi"});
}

void SongSheetTest::whatIsMutedIsWrittenToo()
{
    const auto song = project({melodyTrack({melody({note(60, 0.0)})})}, harmony({1}));
    song->tracks[0].muted = true;
    song->harmonyTrack.muted = true;
    const SongSheet sheet = SongSheet::of(*song);
    QCOMPARE(written(sheet.bars[0].chords), QStringList{QStringLiteral("0 I · Do")});
    QCOMPARE(written(sheet.bars[0].melodies[0]), QStringList{"0 Do"});
}

void SongSheetTest::notesBehindTheEndOfTheirBlockAreNotWritten()
{
    const auto song = project({melodyTrack({melody({note(60, 0.0), note(62, 4.0)}, 0.0, 4.0)})});
    const SongSheet sheet = SongSheet::of(*song);
    QCOMPARE(sheet.bars.size(), 1);
    QCOMPARE(written(sheet.bars[0].melodies[0]), QStringList{"0 Do"});
}

void SongSheetTest::theSheetIsAsLongAsTheSong_data()
{
    QTest::addColumn<double>("loopEnd");
    QTest::addColumn<int>("chords");
    QTest::addColumn<int>("bars");
    QTest::newRow("an empty song has no bars") << 0.0 << 0 << 0;
    QTest::newRow("to the last chord") << 8.0 << 5 << 5;
    QTest::newRow("to the last loop") << 24.0 << 5 << 6;
    QTest::newRow("a bar that is begun counts") << 9.0 << 0 << 3;
}

void SongSheetTest::theSheetIsAsLongAsTheSong()
{
    QFETCH(double, loopEnd);
    QFETCH(int, chords);
    QFETCH(int, bars);
    // A melody that holds nothing does not make the song longer.
    QList<Track> tracks{melodyTrack({melody({}, 0.0, 32.0)})};
    if (loopEnd > 0.0)
        tracks.append(loopTrack({loop("r", "bajo", 0.0, loopEnd)}));
    const auto song = project(tracks, harmony(QList<int>(chords, 1)));
    QCOMPARE(SongSheet::of(*song).bars.size(), bars);
}

void SongSheetTest::compoundMetersHaveTheirBars()
{
    const auto song = project(
        {melodyTrack({melody({note(60, 0.0), note(62, 1.5), note(64, 3.0)})})}, {}, {6, 8, true});
    const SongSheet sheet = SongSheet::of(*song);
    QCOMPARE(written(sheet.bars[0].melodies[0]), (QStringList{"0 Do", "0.5 Re"}));
    QCOMPARE(written(sheet.bars[1].melodies[0]), QStringList{"0 Mi"});
}

void SongSheetTest::damagedSongsHaveASheet_data()
{
    QTest::addColumn<int>("damage");
    QTest::newRow("a meter without bars") << 0;
    QTest::newRow("a bar out of reach") << 1;
    QTest::newRow("notes at no time") << 2;
    QTest::newRow("a bar before the first") << 3;
    QTest::newRow("no chord") << 4;
}

void SongSheetTest::damagedSongsHaveASheet()
{
    QFETCH(int, damage);
    const auto song = project({melodyTrack({melody({note(60, 0.0)})})}, harmony({1}));
    MelodyBlock& block = song->tracks[0].melodyBlocks[0];
    switch (damage) {
    case 0:
        song->timeSignature.denominator = 0;
        break;
    case 1:
        song->harmonyTrack.blocks[0].barIndex = std::numeric_limits<qint32>::max();
        block.startBeat = 1e300;
        break;
    case 2:
        block.notes.append({note(62, std::numeric_limits<double>::quiet_NaN()), note(64, -8.0),
                            note(65, -std::numeric_limits<double>::infinity())});
        break;
    case 3:
        song->harmonyTrack.blocks[0].barIndex = -5;
        break;
    default:
        song->harmonyTrack.blocks[0].events = {chord(9, 0.0, 4.0), chord(1, -3.0, 4.0),
                                               chord(2, 77.0, 4.0)};
        break;
    }
    const SongSheet sheet = SongSheet::of(*song);
    QVERIFY(sheet.bars.size() <= SongSheet::kMostBars);
    for (const SheetBar& bar : sheet.bars) {
        for (const SheetWord& word : bar.chords)
            QVERIFY(word.place >= 0.0 && word.place < 1.0 && !word.text.isEmpty());
        for (const QList<SheetWord>& notes : bar.melodies) {
            for (const SheetWord& word : notes)
                QVERIFY(word.place >= 0.0 && word.place < 1.0);
        }
    }
    if (damage == 0)
        QCOMPARE(sheet.bars.size(), 0);
    if (damage == 2)
        QCOMPARE(written(sheet.bars[0].melodies[0]), QStringList{"0 Do"});
    if (damage == 4)
        QVERIFY(sheet.bars[0].chords.isEmpty());
}

QTEST_GUILESS_MAIN(SongSheetTest)
#include "SongSheetTest.moc"
