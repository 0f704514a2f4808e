#include "views/pianoroll/PianoRollLayout.h"

#include "model/Project.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QTest>

#include <limits>

namespace PianoRollLayoutTests {

using namespace ProjectBuilder;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kMostInt = std::numeric_limits<int>::max();
constexpr int kLeastInt = std::numeric_limits<int>::min();

constexpr TimeSignature kFourFour{4, 4, false};
constexpr TimeSignature kThreeFour{3, 4, false};
constexpr TimeSignature kSixEight{6, 8, true};

/// Notes of these pitches, anywhere.
QList<NoteEvent> notesOf(const QList<int>& pitches)
{
    return notesInARow(pitches);
}

/// The lines as "B" for a bar, "b" for a beat and "s" for a subdivision, each with its beat.
QStringList written(const QList<PianoRollLine>& lines)
{
    QStringList result;
    for (const PianoRollLine& line : lines)
        result.append(QString(QChar("sbB"[static_cast<int>(line.kind)])) +
                      QString::number(line.beat));
    return result;
}

} // namespace

class PianoRollLayoutTest : public QObject {
    Q_OBJECT

private slots:
    void pitchesStandInRows_data();
    void pitchesStandInRows();
    void heightsOutsideTheRowsHaveNoPitch_data();
    void heightsOutsideTheRowsHaveNoPitch();
    void stretchesTouchRows_data();
    void stretchesTouchRows();
    void waysAreWholeRows_data();
    void waysAreWholeRows();

    void thirteenRowsFromSeventyTwoAreUsual();
    void topIsHeldToTheRows_data();
    void topIsHeldToTheRows();
    void rowsAreHeldToEightAndSeventyThree();
    void rowsHoldPitches();
    void rowsFitAMelody_data();
    void rowsFitAMelody();
    void everyMelodyFits();

    void wheelTurnsInWholeRows_data();
    void wheelTurnsInWholeRows();
    void smallTurnsAddUp();

    void stepsFollowTheLevel_data();
    void stepsFollowTheLevel();
    void linesOfAStretch_data();
    void linesOfAStretch();
    void linesOfDamagedMetersEnd_data();
    void linesOfDamagedMetersEnd();
    void noLinesBeyondTheLastBeat();

    void scalesOfTheModes_data();
    void scalesOfTheModes();
    void fiveKeysOfAnOctaveAreBlack();

    void notesStandOnTheirRows_data();
    void notesStandOnTheirRows();
    void notesWithoutAPlaceAreLeftOut_data();
    void notesWithoutAPlaceAreLeftOut();
    void gripIsSixPixelsOfTheScreen_data();
    void gripIsSixPixelsOfTheScreen();
    void barsOfAMelody_data();
    void barsOfAMelody();
    void barsOfDamagedMelodies_data();
    void barsOfDamagedMelodies();

    void sceneIsEightBarsLongerThanTheSong_data();
    void sceneIsEightBarsLongerThanTheSong();
    void sceneOfADamagedMeterIsBounded_data();
    void sceneOfADamagedMeterIsBounded();
};

// ---- Rows ----------------------------------------------------------------------------------

void PianoRollLayoutTest::pitchesStandInRows_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<double>("y");

    QTest::newRow("highest") << 96 << 0.0;
    QTest::newRow("second") << 95 << 16.0;
    QTest::newRow("middle C") << 60 << 576.0;
    QTest::newRow("lowest") << 24 << 1152.0;
}

void PianoRollLayoutTest::pitchesStandInRows()
{
    QFETCH(int, pitch);
    QFETCH(double, y);
    QCOMPARE(PianoRollLayout::pitchToSceneY(pitch), y);
    QCOMPARE(PianoRollLayout::sceneYToPitch(y), pitch);
    QCOMPARE(PianoRollLayout::sceneYToPitch(y + 15.99), pitch);
}

void PianoRollLayoutTest::heightsOutsideTheRowsHaveNoPitch_data()
{
    QTest::addColumn<double>("y");

    QTest::newRow("above") << -0.01;
    QTest::newRow("below") << 1168.0;
    QTest::newRow("far above") << -1e300;
    QTest::newRow("far below") << 1e300;
    QTest::newRow("infinitely far") << kInfinity;
    QTest::newRow("nowhere") << kNaN;
}

void PianoRollLayoutTest::heightsOutsideTheRowsHaveNoPitch()
{
    QFETCH(double, y);
    QCOMPARE(PianoRollLayout::sceneYToPitch(y), -1);
}

void PianoRollLayoutTest::stretchesTouchRows_data()
{
    QTest::addColumn<double>("top");
    QTest::addColumn<double>("bottom");
    QTest::addColumn<int>("highest");
    QTest::addColumn<int>("lowest");

    QTest::newRow("all") << 0.0 << 1168.0 << 96 << 24;
    QTest::newRow("inside one row") << 20.0 << 30.0 << 95 << 95;
    QTest::newRow("over an edge") << 30.0 << 33.0 << 95 << 94;
    QTest::newRow("beyond both ends") << -1e9 << 1e9 << 96 << 24;
    QTest::newRow("endless") << -kInfinity << kInfinity << 96 << 24;
}

void PianoRollLayoutTest::stretchesTouchRows()
{
    QFETCH(double, top);
    QFETCH(double, bottom);
    const PianoRollLayout::PitchSpan span = PianoRollLayout::pitchesBetween(top, bottom);
    QTEST(span.highest, "highest");
    QTEST(span.lowest, "lowest");
}

void PianoRollLayoutTest::waysAreWholeRows_data()
{
    QTest::addColumn<double>("pixels");
    QTest::addColumn<int>("rows");

    QTest::newRow("none") << 0.0 << 0;
    QTest::newRow("less than half a row") << 7.9 << 0;
    QTest::newRow("half a row") << 8.0 << 1;
    QTest::newRow("up") << -24.1 << -2;
    QTest::newRow("farther than the rows") << 1e300 << 73;
    QTest::newRow("farther up than the rows") << -1e300 << -73;
}

void PianoRollLayoutTest::waysAreWholeRows()
{
    QFETCH(double, pixels);
    QTEST(PianoRollLayout::rowsIn(pixels), "rows");
}

void PianoRollLayoutTest::thirteenRowsFromSeventyTwoAreUsual()
{
    QCOMPARE(PitchRows().count, 13);
    QCOMPARE(PitchRows().top, 72);
    QCOMPARE(PitchRows::around({}), PitchRows());
}

void PianoRollLayoutTest::topIsHeldToTheRows_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("pitch");
    QTest::addColumn<int>("top");

    QTest::newRow("inside") << 13 << 80 << 80;
    QTest::newRow("highest") << 13 << 96 << 96;
    QTest::newRow("above the highest") << 13 << 97 << 96;
    QTest::newRow("lowest row at the bottom") << 13 << 36 << 36;
    QTest::newRow("one below that") << 13 << 35 << 36;
    QTest::newRow("all rows have one top only") << 73 << 60 << 96;
    QTest::newRow("fewest rows") << 8 << 0 << 31;
    QTest::newRow("absurdly high") << 13 << kMostInt << 96;
    QTest::newRow("absurdly low") << 13 << kLeastInt << 36;
}

void PianoRollLayoutTest::topIsHeldToTheRows()
{
    QFETCH(int, count);
    QFETCH(int, pitch);
    QFETCH(int, top);
    QCOMPARE((PitchRows{count, 72}.withTop(pitch)), (PitchRows{count, top}));
}

void PianoRollLayoutTest::rowsAreHeldToEightAndSeventyThree()
{
    QCOMPARE(PitchRows().withOneMore().count, 14);
    QCOMPARE(PitchRows().withOneFewer().count, 12);
    QCOMPARE((PitchRows{8, 72}.withOneFewer().count), 8);
    QCOMPARE((PitchRows{73, 96}.withOneMore().count), 73);
}

void PianoRollLayoutTest::rowsHoldPitches()
{
    const PitchRows rows{13, 72};
    QVERIFY(rows.contains(72));
    QVERIFY(rows.contains(60));
    QVERIFY(!rows.contains(73));
    QVERIFY(!rows.contains(59));
    QVERIFY(!rows.contains(kMostInt));
    QVERIFY(!rows.contains(kLeastInt));
}

void PianoRollLayoutTest::rowsFitAMelody_data()
{
    QTest::addColumn<QList<int>>("pitches");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("top");

    QTest::newRow("one note at 60") << QList{60} << 13 << 66;
    QTest::newRow("two neighbours") << QList{60, 61} << 13 << 67;
    QTest::newRow("eleven notes fill the usual rows") << QList{60, 70} << 13 << 71;
    QTest::newRow("twelve notes take one row more") << QList{60, 71} << 14 << 72;
    QTest::newRow("30 to 90") << QList{30, 90} << 63 << 91;
    QTest::newRow("order does not matter") << QList{90, 60, 30} << 63 << 91;
    QTest::newRow("one that reaches 96 slides down") << QList{80, 96} << 19 << 96;
    QTest::newRow("one note at 96") << QList{96} << 13 << 96;
    QTest::newRow("one note at 24") << QList{24} << 13 << 36;
    QTest::newRow("one that reaches 24 slides up") << QList{24, 44} << 23 << 46;
    QTest::newRow("all pitches") << QList{24, 96} << 73 << 96;
    QTest::newRow("below the rows") << QList{5, 10} << 13 << 36;
    QTest::newRow("above the rows") << QList{120} << 13 << 96;
    QTest::newRow("absurd pitches") << QList{kLeastInt, kMostInt} << 73 << 96;
    QTest::newRow("absurdly high") << QList{kMostInt} << 13 << 96;
    QTest::newRow("absurdly low") << QList{kLeastInt} << 13 << 36;
}

void PianoRollLayoutTest::rowsFitAMelody()
{
    QFETCH(QList<int>, pitches);
    QFETCH(int, count);
    QFETCH(int, top);
    QCOMPARE(PitchRows::around(notesOf(pitches)), (PitchRows{count, top}));
}

void PianoRollLayoutTest::everyMelodyFits()
{
    for (int low = 24; low <= 96; ++low) {
        for (int high = low; high <= 96; ++high) {
            const PitchRows rows = PitchRows::around(notesOf({low, high}));
            QVERIFY(rows.contains(low) && rows.contains(high));
            QVERIFY(rows.count >= 13 && rows.count <= 73);
            QCOMPARE(rows.withTop(rows.top), rows);
        }
    }
}

// ---- Wheel ---------------------------------------------------------------------------------

void PianoRollLayoutTest::wheelTurnsInWholeRows_data()
{
    QTest::addColumn<int>("remainder");
    QTest::addColumn<int>("angle");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("left");

    QTest::newRow("one notch up") << 0 << 120 << 1 << 0;
    QTest::newRow("one notch down") << 0 << -120 << -1 << 0;
    QTest::newRow("part of a notch is kept") << 0 << 50 << 0 << 50;
    QTest::newRow("and added to") << 50 << 80 << 1 << 10;
    QTest::newRow("however small both are") << 1 << 1 << 0 << 2;
    QTest::newRow("downwards too") << -50 << -80 << -1 << -10;
    QTest::newRow("rows are cut toward zero") << 0 << -239 << -1 << -119;
    QTest::newRow("a turn the other way starts anew") << 100 << -50 << 0 << -50;
    QTest::newRow("also upwards") << -100 << 50 << 0 << 50;
    QTest::newRow("no turn keeps what is left downwards") << -100 << 0 << 0 << -100;
    QTest::newRow("no turn drops what is left upwards") << 100 << 0 << 0 << 0;
    QTest::newRow("absurd turn") << 119 << kMostInt << 17895698 << 6;
    QTest::newRow("absurd turn down") << -119 << kLeastInt << -17895698 << -7;
}

void PianoRollLayoutTest::wheelTurnsInWholeRows()
{
    QFETCH(int, remainder);
    QFETCH(int, angle);
    QFETCH(int, rows);
    QFETCH(int, left);
    QCOMPARE(PianoRollLayout::turned(remainder, angle), (WheelTurn{rows, left}));
}

void PianoRollLayoutTest::smallTurnsAddUp()
{
    WheelTurn turn;
    int rows = 0;
    for (int i = 0; i < 120; ++i) {
        turn = PianoRollLayout::turned(turn.remainder, 7);
        rows += turn.rows;
    }
    QCOMPARE(rows, 7);
    QCOMPARE(turn.remainder, 0);
}

// ---- Time ----------------------------------------------------------------------------------

void PianoRollLayoutTest::stepsFollowTheLevel_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("level");
    QTest::addColumn<double>("step");

    QTest::newRow("pulse") << kFourFour << 0 << 1.0;
    QTest::newRow("division") << kFourFour << 1 << 0.5;
    QTest::newRow("subdivision") << kFourFour << 2 << 0.25;
    QTest::newRow("pulse of 6/8") << kSixEight << 0 << 1.5;
    QTest::newRow("division of 6/8") << kSixEight << 1 << 0.5;
    QTest::newRow("subdivision of 6/8") << kSixEight << 2 << 0.25;
    QTest::newRow("unknown level") << kFourFour << 77 << 1.0;
    QTest::newRow("damaged meter") << TimeSignature{0, 0, false} << 1 << 0.5;
}

void PianoRollLayoutTest::stepsFollowTheLevel()
{
    QFETCH(TimeSignature, meter);
    QFETCH(int, level);
    QTEST(PianoRollLayout::snapBeats(meter, static_cast<GridSubdivisionLevel>(level)), "step");
}

void PianoRollLayoutTest::linesOfAStretch_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("level");
    QTest::addColumn<double>("left");
    QTest::addColumn<double>("right");
    QTest::addColumn<QStringList>("lines");

    QTest::newRow("start of 4/4 by pulses")
        << kFourFour << 0 << 0.0 << 256.0 << QStringList{"B0", "b1", "b2", "b3", "B4", "b5"};
    QTest::newRow("a bar line in the middle, by divisions")
        << kFourFour << 1 << 250.0 << 262.0
        << QStringList{"s2.5", "b3", "s3.5", "B4", "s4.5", "b5"};
    QTest::newRow("by subdivisions")
        << kFourFour << 2 << 128.0 << 128.0
        << QStringList{"b1", "s1.25", "s1.5", "s1.75", "b2", "s2.25", "s2.5", "s2.75", "b3"};
    QTest::newRow("3/4") << kThreeFour << 0 << 128.0 << 256.0
                         << QStringList{"b1", "b2", "B3", "b4", "b5"};
    QTest::newRow("6/8 by pulses")
        << kSixEight << 0 << 0.0 << 192.0 << QStringList{"B0", "b1.5", "B3", "b4.5"};
    QTest::newRow("6/8 by divisions")
        << kSixEight << 1 << 96.0 << 96.0
        << QStringList{"B0", "s0.5", "s1", "b1.5", "s2", "s2.5", "B3"};
    QTest::newRow("left of the start")
        << kFourFour << 0 << -640.0 << 0.0 << QStringList{"B0", "b1"};
}

void PianoRollLayoutTest::linesOfAStretch()
{
    QFETCH(TimeSignature, meter);
    QFETCH(int, level);
    QFETCH(double, left);
    QFETCH(double, right);
    const auto lines =
        PianoRollLayout::gridLines(left, right, meter, static_cast<GridSubdivisionLevel>(level));
    QTEST(written(lines), "lines");
}

void PianoRollLayoutTest::linesOfDamagedMetersEnd_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<QStringList>("lines");

    const QStringList noBars{"b0", "b1", "b2"};
    QTest::newRow("denominator 0, a bar without end")
        << TimeSignature{4, 0, false} << QStringList{"B0", "b1", "b2"};
    QTest::newRow("numerator and denominator 0") << TimeSignature{0, 0, false} << noBars;
    QTest::newRow("numerator 0") << TimeSignature{0, 4, false} << noBars;
    QTest::newRow("bars as long as beats, backwards")
        << TimeSignature{-1, 4, false} << QStringList{"B0", "B1", "B2"};
}

void PianoRollLayoutTest::linesOfDamagedMetersEnd()
{
    QFETCH(TimeSignature, meter);
    QTEST(written(PianoRollLayout::gridLines(0.0, 64.0, meter, GridSubdivisionLevel::Pulse)),
          "lines");
}

void PianoRollLayoutTest::noLinesBeyondTheLastBeat()
{
    const auto lines = [](double left, double right) {
        return PianoRollLayout::gridLines(left, right, kFourFour, GridSubdivisionLevel::Pulse);
    };
    QCOMPARE(lines(64e6 - 64.0, 1e300).last().beat, 1e6);
    QVERIFY(lines(1e300, 1e300).isEmpty());
    QVERIFY(lines(0.0, kNaN).isEmpty());
    QCOMPARE(lines(kNaN, 64.0).size(), 3);
}

// ---- Keys and scales -----------------------------------------------------------------------

void PianoRollLayoutTest::scalesOfTheModes_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<int>>("pitchClasses");

    QTest::newRow("C major") << 0 << 0 << QList{0, 2, 4, 5, 7, 9, 11};
    QTest::newRow("A minor") << 9 << 1 << QList{0, 2, 4, 5, 7, 9, 11};
    QTest::newRow("D dorian") << 2 << 2 << QList{0, 2, 4, 5, 7, 9, 11};
    QTest::newRow("F lydian") << 5 << 3 << QList{0, 2, 4, 5, 7, 9, 11};
    QTest::newRow("C minor") << 0 << 1 << QList{0, 2, 3, 5, 7, 8, 10};
    QTest::newRow("C lydian") << 0 << 3 << QList{0, 2, 4, 6, 7, 9, 11};
    QTest::newRow("unknown mode is major") << 0 << 99 << QList{0, 2, 4, 5, 7, 9, 11};
}

void PianoRollLayoutTest::scalesOfTheModes()
{
    QFETCH(int, root);
    QFETCH(int, mode);
    QFETCH(QList<int>, pitchClasses);
    const KeySignature key{root, static_cast<KeyMode>(mode)};
    for (int pitch = 24; pitch <= 96; ++pitch)
        QCOMPARE(PianoRollLayout::isInScale(key, pitch), pitchClasses.contains(pitch % 12));
}

void PianoRollLayoutTest::fiveKeysOfAnOctaveAreBlack()
{
    QList<int> black;
    for (int pitch = 60; pitch < 72; ++pitch) {
        if (PianoRollLayout::isBlackKey(pitch))
            black.append(pitch);
    }
    QCOMPARE(black, (QList{61, 63, 66, 68, 70}));
    QVERIFY(!PianoRollLayout::isBlackKey(-1));
    QVERIFY(PianoRollLayout::isBlackKey(-2));
    QVERIFY(PianoRollLayout::isBlackKey(-26));
}

// ---- Notes ---------------------------------------------------------------------------------

void PianoRollLayoutTest::notesStandOnTheirRows_data()
{
    QTest::addColumn<double>("blockStart");
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("duration");
    QTest::addColumn<int>("pitch");
    QTest::addColumn<QRectF>("rect");

    QTest::newRow("plain") << 0.0 << 1.0 << 0.5 << 96 << QRectF(64, 1, 32, 14);
    QTest::newRow("in a later block") << 4.0 << 1.0 << 1.0 << 60 << QRectF(320, 577, 64, 14);
    QTest::newRow("lowest") << 0.0 << 0.0 << 1.0 << 24 << QRectF(0, 1153, 64, 14);
    QTest::newRow("above the rows") << 0.0 << 0.0 << 1.0 << 97 << QRectF(0, -15, 64, 14);
    QTest::newRow("before the song") << 0.0 << -2.0 << 1.0 << 96 << QRectF(-128, 1, 64, 14);
    QTest::newRow("without length") << 0.0 << 1.0 << 0.0 << 96 << QRectF(64, 1, 0, 14);
    QTest::newRow("of negative length") << 0.0 << 1.0 << -3.0 << 96 << QRectF(64, 1, 0, 14);
    QTest::newRow("endless") << 0.0 << 1.0 << 1e300 << 96 << QRectF(64, 1, 64e6, 14);
}

void PianoRollLayoutTest::notesStandOnTheirRows()
{
    QFETCH(double, blockStart);
    QFETCH(double, start);
    QFETCH(double, duration);
    QFETCH(int, pitch);
    QFETCH(QRectF, rect);
    const auto found =
        PianoRollLayout::noteRect(melody({}, blockStart), note(pitch, start, duration));
    QVERIFY(found);
    QCOMPARE(*found, rect);
}

void PianoRollLayoutTest::notesWithoutAPlaceAreLeftOut_data()
{
    QTest::addColumn<double>("blockStart");
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("duration");

    QTest::newRow("start is no number") << 0.0 << kNaN << 1.0;
    QTest::newRow("block is nowhere") << kNaN << 0.0 << 1.0;
    QTest::newRow("length is no number") << 0.0 << 0.0 << kNaN;
    QTest::newRow("infinitely long") << 0.0 << 0.0 << kInfinity;
    QTest::newRow("infinitely far") << 0.0 << kInfinity << 1.0;
    QTest::newRow("too far") << 0.0 << 1e300 << 1.0;
    QTest::newRow("too far before") << -1e300 << 0.0 << 1.0;
}

void PianoRollLayoutTest::notesWithoutAPlaceAreLeftOut()
{
    QFETCH(double, blockStart);
    QFETCH(double, start);
    QFETCH(double, duration);
    QVERIFY(!PianoRollLayout::noteRect(melody({}, blockStart), note(60, start, duration)));
}

void PianoRollLayoutTest::gripIsSixPixelsOfTheScreen_data()
{
    QTest::addColumn<double>("scale");
    QTest::addColumn<double>("x");
    QTest::addColumn<bool>("grip");

    QTest::newRow("inside") << 1.0 << 94.5 << true;
    QTest::newRow("at its edge") << 1.0 << 94.0 << false;
    QTest::newRow("zoomed in it is narrower in the scene") << 2.0 << 96.5 << false;
    QTest::newRow("inside it") << 2.0 << 97.5 << true;
    QTest::newRow("zoomed out it is wider") << 0.5 << 89.0 << true;
    QTest::newRow("far out it is a third of the note") << 0.2 << 78.5 << false;
    QTest::newRow("inside the third") << 0.2 << 79.0 << true;
}

void PianoRollLayoutTest::gripIsSixPixelsOfTheScreen()
{
    QFETCH(double, scale);
    QFETCH(double, x);
    QTEST(PianoRollLayout::isOnGrip(x, QRectF(36.0, 1.0, 64.0, 14.0), scale), "grip");
}

void PianoRollLayoutTest::barsOfAMelody_data()
{
    QTest::addColumn<double>("blockStart");
    QTest::addColumn<double>("first");
    QTest::addColumn<double>("lastEnd");
    QTest::addColumn<double>("bar");
    QTest::addColumn<int>("bars");

    QTest::newRow("one bar") << 0.0 << 0.0 << 4.0 << 4.0 << 1;
    QTest::newRow("a bit more") << 0.0 << 0.0 << 4.1 << 4.0 << 2;
    QTest::newRow("over a bar line") << 0.0 << 3.0 << 5.0 << 4.0 << 2;
    QTest::newRow("later block") << 8.0 << 0.0 << 1.0 << 4.0 << 1;
    QTest::newRow("block across a bar line") << 6.0 << 0.0 << 4.0 << 4.0 << 2;
    QTest::newRow("rounding errors make no bar") << 0.0 << 4.0 - 1e-10 << 8.0 + 1e-10 << 4.0 << 1;
    QTest::newRow("6/8") << 0.0 << 0.0 << 9.0 << 3.0 << 3;
}

void PianoRollLayoutTest::barsOfAMelody()
{
    QFETCH(double, blockStart);
    QFETCH(double, first);
    QFETCH(double, lastEnd);
    QFETCH(double, bar);
    const MelodyBlock block =
        melody({note(60, first, 0.25), note(62, lastEnd - 0.25, 0.25)}, blockStart);
    QTEST(PianoRollLayout::barsOf(block, bar), "bars");
}

void PianoRollLayoutTest::barsOfDamagedMelodies_data()
{
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("bar");
    QTest::addColumn<int>("bars");

    QTest::newRow("bar without length") << 4.0 << 0.0 << 0;
    QTest::newRow("bar of no number") << 4.0 << kNaN << 0;
    QTest::newRow("negative bar") << 4.0 << -4.0 << 0;
    QTest::newRow("infinite melody") << kInfinity << 4.0 << 0;
    QTest::newRow("very long melody") << 1e300 << 4.0 << kMostInt;
}

void PianoRollLayoutTest::barsOfDamagedMelodies()
{
    QFETCH(double, end);
    QFETCH(double, bar);
    QTEST(PianoRollLayout::barsOf(melody({note(60, 0.0, end)}), bar), "bars");
}

// ---- Scene ---------------------------------------------------------------------------------

void PianoRollLayoutTest::sceneIsEightBarsLongerThanTheSong_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("width");

    QTest::newRow("short song") << kFourFour << 4.0 << 16 * 4.0 * 64.0;
    QTest::newRow("ten bars") << kFourFour << 40.0 << 18 * 4.0 * 64.0;
    QTest::newRow("6/8") << kSixEight << 4.0 << 16 * 3.0 * 64.0;
}

void PianoRollLayoutTest::sceneIsEightBarsLongerThanTheSong()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, end);
    QFETCH(double, width);
    const auto song = project({melodyTrack({melody({}, 0.0, end)})}, {}, meter);
    QCOMPARE(PianoRollLayout::sceneSize(*song), QSizeF(width, 1168.0));
}

void PianoRollLayoutTest::sceneOfADamagedMeterIsBounded_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("width");

    QTest::newRow("denominator 0") << TimeSignature{4, 0, false} << 4.0 << 0.0;
    QTest::newRow("numerator 0") << TimeSignature{0, 4, false} << 4.0 << 0.0;
    QTest::newRow("negative numerator") << TimeSignature{-4, 4, false} << 4.0 << 0.0;
    QTest::newRow("endless song") << kFourFour << 1e300 << 64e6;
    QTest::newRow("endless bar") << TimeSignature{kMostInt, 1, false} << 4.0 << 64e6;
}

void PianoRollLayoutTest::sceneOfADamagedMeterIsBounded()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, end);
    QFETCH(double, width);
    const auto song = project({melodyTrack({melody({}, 0.0, end)})}, {}, meter);
    QCOMPARE(PianoRollLayout::sceneSize(*song), QSizeF(width, 1168.0));
}

VELTA_GUILESS_TEST(PianoRollLayoutTest)

} // namespace PianoRollLayoutTests

#include "PianoRollLayoutTest.moc"
