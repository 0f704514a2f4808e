#include "views/arranger/ArrangerLayout.h"

#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "support/ContentFixture.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QTest>
#include <QTranslator>

#include <cmath>
#include <limits>
#include <memory>

namespace ArrangerLayoutTests {

using namespace ProjectBuilder;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr qint32 kMostInt = std::numeric_limits<qint32>::max();
constexpr qint32 kLeastInt = std::numeric_limits<qint32>::min();

constexpr TimeSignature simple(int numerator, int denominator)
{
    return {.numerator = numerator, .denominator = denominator, .isCompound = false};
}

constexpr TimeSignature compound(int numerator, int denominator)
{
    return {.numerator = numerator, .denominator = denominator, .isCompound = true};
}

// ---- Songs ---------------------------------------------------------------------------------

Track melodyNamed(const QString& name)
{
    Track track;
    track.name = name;
    return track;
}

Track loopsNamed(const QString& name, const QString& layerId)
{
    Track track = melodyNamed(name);
    track.isAccompaniment = true;
    track.layerId = layerId;
    return track;
}

AudioTrack voiceNamed(const QString& name)
{
    AudioTrack track;
    track.name = name;
    return track;
}

struct AnySong {
    QList<Track> tracks = {};
    QList<AudioTrack> audioTracks = {};
    QStringList collapsedGroups = {};
};

std::unique_ptr<Project> projectOf(const AnySong& song)
{
    auto result = project(song.tracks);
    result->audioTracks = song.audioTracks;
    result->collapsedGroups = song.collapsedGroups;
    return result;
}

// ---- What is laid out ----------------------------------------------------------------------

/// "kind index: top+height label", and what a group has beside that.
QString written(const LaneInfo& lane)
{
    QString text = QStringLiteral("%1 %2: %3+%4 %5")
                       .arg(static_cast<int>(lane.kind))
                       .arg(lane.trackIndex)
                       .arg(lane.top)
                       .arg(lane.height)
                       .arg(lane.label);
    if (!lane.groupKey.isEmpty() || lane.collapsed || lane.childCount != 0)
        text += QStringLiteral(" (%1, %2, %3)")
                    .arg(lane.groupKey, lane.collapsed ? "folded" : "open")
                    .arg(lane.childCount);
    return text;
}

QStringList written(const QList<LaneInfo>& lanes)
{
    QStringList lines;
    for (const LaneInfo& lane : lanes)
        lines.append(written(lane));
    return lines;
}

/// The beats of the lines, with a bar in front of those of bar lines.
QString written(const QList<GridLine>& lines)
{
    QStringList words;
    for (const GridLine& line : lines)
        words.append((line.isBar ? "|" : "") + QString::number(line.beat));
    return words.join(' ');
}

/// Answers every text of the arranger in capitals between marks.
class Foreign : public QTranslator {
public:
    QString translate(const char* context, const char* source, const char*, int) const override
    {
        return qstrcmp(context, "TrackArranger") == 0
                   ? "<" + QString::fromUtf8(source).toUpper() + ">"
                   : QString();
    }

    bool isEmpty() const override { return false; }
};

} // namespace

class ArrangerLayoutTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void lanesFollowFromTheProject_data();
    void lanesFollowFromTheProject();
    void emptySongIsSixtyTwoPixelsHigh();
    void withoutALibraryAllAccompanimentIsInstrumental();
    void lanesOfAnySongAreStackedWithoutGaps();
    void labelsAreTranslatedInTheContextOfTheArranger();

    void pitchedTracks_data();
    void pitchedTracks();

    void laneAtAHeight_data();
    void laneAtAHeight();
    void trackInAFoldedGroupHasNoLane();
    void laneOfATrackGoesByItsKind();

    void sceneSize_data();
    void sceneSize();
    void sceneSizeIsBoundedInADamagedSong_data();
    void sceneSizeIsBoundedInADamagedSong();
    void sceneWithoutLanesIsTheBottomMargin();

    void snapStep_data();
    void snapStep();
    void placeFallsBackToItsStep_data();
    void placeFallsBackToItsStep();
    void placeFallsBackToItsBar_data();
    void placeFallsBackToItsBar();

    void gridLines_data();
    void gridLines();
    void gridCoversWhateverIsExposed();
    void gridOfADamagedMeterEnds_data();
    void gridOfADamagedMeterEnds();
    void gridOfAnAbsurdStretchEnds_data();
    void gridOfAnAbsurdStretchEnds();

    void muteSquare_data();
    void muteSquare();
    void gripIsSevenPixelsWideOnScreen_data();
    void gripIsSevenPixelsWideOnScreen();
    void gripIsAThirdOfAShortBlock();

private:
    ContentFixture content_;
};

void ArrangerLayoutTest::initTestCase()
{
    content_.addPackage("r", R"({"rhythm": {"id": "r"}, "loopLayers": [
        {"id": "bombo", "pitched": false}, {"id": "palmas", "pitched": false},
        {"id": "bajo", "pitched": true}, {"id": "piano", "pitched": true}]})");
    content_.library().reload();
    QVERIFY(content_.library().findLayer("piano"));
}

// ---- Lanes ---------------------------------------------------------------------------------

void ArrangerLayoutTest::lanesFollowFromTheProject_data()
{
    QTest::addColumn<AnySong>("song");
    QTest::addColumn<QStringList>("expected");

    const QString chords = "0 -1: 0+26 ♫ Acordes";
    const QString veltas = "1 -1: 26+18 VELTAS";

    QTest::newRow("empty song has the chords and both headers")
        << AnySong{} << QStringList{chords, veltas, "1 -1: 44+18 ACOMPAÑAMIENTO"};
    QTest::newRow("melody tracks stand in the order of the project")
        << AnySong{.tracks = {melodyNamed("Quena"), melodyNamed("Flauta")}}
        << QStringList{chords, veltas, "3 0: 44+42 🎹 Quena", "3 1: 86+42 🎹 Flauta",
                       "1 -1: 128+18 ACOMPAÑAMIENTO"};
    QTest::newRow("voices stand under the melody tracks")
        << AnySong{.tracks = {melodyNamed("Quena")},
                   .audioTracks = {voiceNamed("Ana"), voiceNamed("Beto")}}
        << QStringList{chords,
                       veltas,
                       "3 0: 44+42 🎹 Quena",
                       "4 0: 86+42 🎤 Ana",
                       "4 1: 128+42 🎤 Beto",
                       "1 -1: 170+18 ACOMPAÑAMIENTO"};
    QTest::newRow("voices alone") << AnySong{.audioTracks = {voiceNamed("Ana")}}
                                  << QStringList{chords, veltas, "4 0: 44+42 🎤 Ana",
                                                 "1 -1: 86+18 ACOMPAÑAMIENTO"};
    QTest::newRow("percussion stands above the instruments, whatever the order of the tracks")
        << AnySong{.tracks = {loopsNamed("Bajo", "bajo"), loopsNamed("Bombo", "bombo"),
                              loopsNamed("Piano", "piano"), loopsNamed("Palmas", "palmas")}}
        << QStringList{chords,
                       veltas,
                       "1 -1: 44+18 ACOMPAÑAMIENTO",
                       "2 -1: 62+22 Percusión (acomp/percusion, open, 2)",
                       "3 1: 84+42 🥁 Bombo",
                       "3 3: 126+42 🥁 Palmas",
                       "2 -1: 168+22 Instrumental (acomp/instrumental, open, 2)",
                       "3 0: 190+42 🎸 Bajo",
                       "3 2: 232+42 🎸 Piano"};
    QTest::newRow("accompaniment in percussion only has no header of instruments")
        << AnySong{.tracks = {loopsNamed("Bombo", "bombo")}}
        << QStringList{chords, veltas, "1 -1: 44+18 ACOMPAÑAMIENTO",
                       "2 -1: 62+22 Percusión (acomp/percusion, open, 1)", "3 0: 84+42 🥁 Bombo"};
    QTest::newRow("accompaniment in instruments only has no header of percussion")
        << AnySong{.tracks = {loopsNamed("Bajo", "bajo")}}
        << QStringList{chords, veltas, "1 -1: 44+18 ACOMPAÑAMIENTO",
                       "2 -1: 62+22 Instrumental (acomp/instrumental, open, 1)",
                       "3 0: 84+42 🎸 Bajo"};
    QTest::newRow("melody and accompaniment are told apart, not sorted")
        << AnySong{.tracks = {loopsNamed("Bajo", "bajo"), melodyNamed("Quena"),
                              loopsNamed("Bombo", "bombo"), melodyNamed("Flauta")}}
        << QStringList{chords,
                       veltas,
                       "3 1: 44+42 🎹 Quena",
                       "3 3: 86+42 🎹 Flauta",
                       "1 -1: 128+18 ACOMPAÑAMIENTO",
                       "2 -1: 146+22 Percusión (acomp/percusion, open, 1)",
                       "3 2: 168+42 🥁 Bombo",
                       "2 -1: 210+22 Instrumental (acomp/instrumental, open, 1)",
                       "3 0: 232+42 🎸 Bajo"};
    QTest::newRow("folded group keeps its header and its count")
        << AnySong{.tracks = {loopsNamed("Bombo", "bombo"), loopsNamed("Palmas", "palmas"),
                              loopsNamed("Bajo", "bajo")},
                   .collapsedGroups = {"acomp/percusion"}}
        << QStringList{chords,
                       veltas,
                       "1 -1: 44+18 ACOMPAÑAMIENTO",
                       "2 -1: 62+22 Percusión (acomp/percusion, folded, 2)",
                       "2 -1: 84+22 Instrumental (acomp/instrumental, open, 1)",
                       "3 2: 106+42 🎸 Bajo"};
    QTest::newRow("both groups folded")
        << AnySong{.tracks = {loopsNamed("Bombo", "bombo"), loopsNamed("Bajo", "bajo")},
                   .collapsedGroups = {"acomp/instrumental", "acomp/percusion"}}
        << QStringList{chords, veltas, "1 -1: 44+18 ACOMPAÑAMIENTO",
                       "2 -1: 62+22 Percusión (acomp/percusion, folded, 1)",
                       "2 -1: 84+22 Instrumental (acomp/instrumental, folded, 1)"};
    QTest::newRow("folded group without tracks is not there")
        << AnySong{.collapsedGroups = {"acomp/percusion", "acomp/instrumental"}}
        << QStringList{chords, veltas, "1 -1: 44+18 ACOMPAÑAMIENTO"};
    QTest::newRow("unknown folded groups, and keys in other letters, fold nothing")
        << AnySong{.tracks = {loopsNamed("Bombo", "bombo")},
                   .collapsedGroups = {"acomp/vientos", "ACOMP/PERCUSION", "", "Percusión"}}
        << QStringList{chords, veltas, "1 -1: 44+18 ACOMPAÑAMIENTO",
                       "2 -1: 62+22 Percusión (acomp/percusion, open, 1)", "3 0: 84+42 🥁 Bombo"};
    QTest::newRow("track of an uninstalled rhythm goes to the instruments")
        << AnySong{.tracks = {loopsNamed("Perdido", "no_such_layer")}}
        << QStringList{chords, veltas, "1 -1: 44+18 ACOMPAÑAMIENTO",
                       "2 -1: 62+22 Instrumental (acomp/instrumental, open, 1)",
                       "3 0: 84+42 🎸 Perdido"};
    QTest::newRow("melody track with a layer of percussion stays a melody track")
        << AnySong{.tracks = {[] {
                       Track track = loopsNamed("Raro", "bombo");
                       track.isAccompaniment = false;
                       return track;
                   }()}}
        << QStringList{chords, veltas, "3 0: 44+42 🎹 Raro", "1 -1: 86+18 ACOMPAÑAMIENTO"};
    QTest::newRow("tracks without a name keep their icon")
        << AnySong{.tracks = {melodyNamed({}), loopsNamed({}, "bombo")},
                   .audioTracks = {voiceNamed({})}}
        << QStringList{chords,
                       veltas,
                       "3 0: 44+42 🎹 ",
                       "4 0: 86+42 🎤 ",
                       "1 -1: 128+18 ACOMPAÑAMIENTO",
                       "2 -1: 146+22 Percusión (acomp/percusion, open, 1)",
                       "3 1: 168+42 🥁 "};
}

void ArrangerLayoutTest::lanesFollowFromTheProject()
{
    QFETCH(AnySong, song);
    QTEST(written(ArrangerLayout::lanes(*projectOf(song), &content_.library())), "expected");
}

void ArrangerLayoutTest::emptySongIsSixtyTwoPixelsHigh()
{
    const Project empty;
    const QList<LaneInfo> lanes = ArrangerLayout::lanes(empty, nullptr);
    QCOMPARE(lanes.last().bottom(), 62);
    QCOMPARE(ArrangerLayout::sceneSize(empty, lanes).height(), 66.0);
}

void ArrangerLayoutTest::withoutALibraryAllAccompanimentIsInstrumental()
{
    const auto song = projectOf({.tracks = {loopsNamed("Bombo", "bombo")}});
    const QStringList lanes = written(ArrangerLayout::lanes(*song, nullptr));
    QCOMPARE(lanes.mid(3), QStringList({"2 -1: 62+22 Instrumental (acomp/instrumental, open, 1)",
                                        "3 0: 84+42 🎸 Bombo"}));
}

void ArrangerLayoutTest::lanesOfAnySongAreStackedWithoutGaps()
{
    for (quint32 seed = 0; seed < 200; ++seed) {
        Project song;
        Generator(seed, Numbers::Hostile).fill(song, 6);
        song.collapsedGroups.append(seed % 2 ? "acomp/percusion" : "acomp/instrumental");
        for (qsizetype i = 0; i < song.tracks.size(); i += 2)
            song.tracks[i].layerId = "bombo";
        const QList<LaneInfo> lanes = ArrangerLayout::lanes(song, &content_.library());
        int y = 0;
        qsizetype tracks = 0;
        for (const LaneInfo& lane : lanes) {
            QCOMPARE(lane.top, y);
            y += lane.height;
            tracks += lane.kind == LaneKind::NoteTrack;
            tracks += lane.collapsed ? lane.childCount : 0;
        }
        QCOMPARE(tracks, song.tracks.size());
    }
}

void ArrangerLayoutTest::labelsAreTranslatedInTheContextOfTheArranger()
{
    Foreign foreign;
    QCoreApplication::installTranslator(&foreign);
    const auto song =
        projectOf({.tracks = {loopsNamed("Bajo", "bajo"), loopsNamed("Bombo", "bombo")},
                   .collapsedGroups = {"acomp/percusion", "acomp/instrumental"}});
    QStringList labels;
    for (const LaneInfo& lane : ArrangerLayout::lanes(*song, &content_.library()))
        labels.append(lane.label);
    QCoreApplication::removeTranslator(&foreign);
    QCOMPARE(labels, QStringList({"<♫ ACORDES>", "<VELTAS>", "<ACOMPAÑAMIENTO>", "<PERCUSIÓN>",
                                  "<INSTRUMENTAL>"}));
}

void ArrangerLayoutTest::pitchedTracks_data()
{
    QTest::addColumn<QString>("layerId");
    QTest::addColumn<QStringList>("layersOfBlocks");
    QTest::addColumn<bool>("pitched");

    QTest::newRow("layer of drums") << "bombo" << QStringList{} << false;
    QTest::newRow("layer of an instrument") << "bajo" << QStringList{} << true;
    QTest::newRow("unknown layer") << "vientos" << QStringList{} << true;
    QTest::newRow("layer in other letters is unknown") << "BOMBO" << QStringList{} << true;
    QTest::newRow("neither layer nor blocks") << "" << QStringList{} << true;
    QTest::newRow("layer of the first block stands in")
        << "" << QStringList{"bombo", "bajo"} << false;
    QTest::newRow("only the first block counts") << "" << QStringList{"bajo", "bombo"} << true;
    QTest::newRow("first block without a layer is the first all the same")
        << "" << QStringList{"", "bombo"} << true;
    QTest::newRow("layer of the track comes before its blocks")
        << "bajo" << QStringList{"bombo"} << true;
    QTest::newRow("unknown layer does not fall back to the blocks")
        << "vientos" << QStringList{"bombo"} << true;
}

void ArrangerLayoutTest::pitchedTracks()
{
    QFETCH(QString, layerId);
    QFETCH(QStringList, layersOfBlocks);
    Track track = loopsNamed("Bombo", layerId);
    for (const QString& layer : layersOfBlocks)
        track.loopBlocks.append(loop("r", layer, 0.0, 4.0));
    QTEST(ArrangerLayout::isPitchedTrack(track, &content_.library()), "pitched");
    QVERIFY(ArrangerLayout::isPitchedTrack(track, nullptr));
}

// ---- Finding lanes -------------------------------------------------------------------------

void ArrangerLayoutTest::laneAtAHeight_data()
{
    QTest::addColumn<double>("y");
    QTest::addColumn<int>("index");

    QTest::newRow("top of the first") << 0.0 << 0;
    QTest::newRow("end of the first") << 25.999 << 0;
    QTest::newRow("top belongs to the lower lane") << 26.0 << 1;
    QTest::newRow("inside a track") << 60.0 << 2;
    QTest::newRow("end of the last") << 103.999 << 3;
    QTest::newRow("below the last") << 104.0 << -1;
    QTest::newRow("above the first") << -0.001 << -1;
    QTest::newRow("far below") << 1e300 << -1;
    QTest::newRow("infinity") << kInfinity << -1;
    QTest::newRow("not a number") << kNaN << -1;
}

void ArrangerLayoutTest::laneAtAHeight()
{
    QFETCH(double, y);
    QFETCH(int, index);
    const auto song = projectOf({.tracks = {melodyNamed("Quena")}});
    const QList<LaneInfo> lanes = ArrangerLayout::lanes(*song, nullptr);
    const LaneInfo* lane = ArrangerLayout::laneAtY(lanes, y);
    QCOMPARE(lane ? lane - lanes.constData() : -1, index);
    QVERIFY(!ArrangerLayout::laneAtY({}, y));
}

void ArrangerLayoutTest::trackInAFoldedGroupHasNoLane()
{
    const AnySong open{.tracks = {loopsNamed("Bombo", "bombo"), loopsNamed("Bajo", "bajo")}};
    AnySong folded = open;
    folded.collapsedGroups = {"acomp/percusion"};
    const auto openLanes = ArrangerLayout::lanes(*projectOf(open), &content_.library());
    const auto foldedLanes = ArrangerLayout::lanes(*projectOf(folded), &content_.library());
    QCOMPARE(ArrangerLayout::laneOfTrack(openLanes, LaneKind::NoteTrack, 0)->top, 84);
    QCOMPARE(ArrangerLayout::laneOfTrack(openLanes, LaneKind::NoteTrack, 1)->top, 148);
    QVERIFY(!ArrangerLayout::laneOfTrack(foldedLanes, LaneKind::NoteTrack, 0));
    QCOMPARE(ArrangerLayout::laneOfTrack(foldedLanes, LaneKind::NoteTrack, 1)->top, 106);
}

void ArrangerLayoutTest::laneOfATrackGoesByItsKind()
{
    const auto song = projectOf(
        {.tracks = {melodyNamed("Quena")}, .audioTracks = {voiceNamed("Ana"), voiceNamed("Beto")}});
    const QList<LaneInfo> lanes = ArrangerLayout::lanes(*song, nullptr);
    QCOMPARE(ArrangerLayout::laneOfTrack(lanes, LaneKind::NoteTrack, 0)->top, 44);
    QCOMPARE(ArrangerLayout::laneOfTrack(lanes, LaneKind::AudioTrack, 0)->top, 86);
    QCOMPARE(ArrangerLayout::laneOfTrack(lanes, LaneKind::AudioTrack, 1)->top, 128);
    QVERIFY(!ArrangerLayout::laneOfTrack(lanes, LaneKind::NoteTrack, 1));
    QVERIFY(!ArrangerLayout::laneOfTrack(lanes, LaneKind::NoteTrack, kMostInt));
    QVERIFY(!ArrangerLayout::laneOfTrack(lanes, LaneKind::NoteTrack, kLeastInt));
}

// ---- Size of the scene ---------------------------------------------------------------------

void ArrangerLayoutTest::sceneSize_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("width");

    QTest::newRow("empty 4/4 is 8 and 8 bars of 128") << simple(4, 4) << 0.0 << 2048.0;
    QTest::newRow("empty 6/8 is 16 bars of 96") << compound(6, 8) << 0.0 << 1536.0;
    QTest::newRow("empty 5/4 is 16 bars of 160") << simple(5, 4) << 0.0 << 2560.0;
    QTest::newRow("empty 12/8 is 16 bars of 192") << compound(12, 8) << 0.0 << 3072.0;
    QTest::newRow("short song is not longer") << simple(4, 4) << 31.0 << 2048.0;
    QTest::newRow("eight bars are not longer") << simple(4, 4) << 32.0 << 2048.0;
    QTest::newRow("ninth bar makes it longer") << simple(4, 4) << 32.5 << 2176.0;
    QTest::newRow("twenty bars of 3/4") << simple(3, 4) << 60.0 << 28.0 * 96.0;
}

void ArrangerLayoutTest::sceneSize()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, end);
    QFETCH(double, width);
    const auto song = project({melodyTrack({melody({}, 0.0, end)})}, {}, meter);
    const QSizeF size = ArrangerLayout::sceneSize(*song, ArrangerLayout::lanes(*song, nullptr));
    // Chords 26, a header 18, the track 42, a header 18, and 4 below.
    QCOMPARE(size, QSizeF(width, 108.0));
}

void ArrangerLayoutTest::sceneSizeIsBoundedInADamagedSong_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("end");
    QTest::addColumn<int>("lastBar");
    QTest::addColumn<double>("width");

    constexpr double kMost = 32e6;
    QTest::newRow("block without end") << simple(4, 4) << kInfinity << -1 << 2048.0;
    QTest::newRow("block that is no number long") << simple(4, 4) << kNaN << -1 << 2048.0;
    QTest::newRow("block of 1e300 beats") << simple(4, 4) << 1e300 << -1 << kMost;
    QTest::newRow("chord in bar 2^31 - 1") << simple(4, 4) << 0.0 << kMostInt << kMost;
    QTest::newRow("chord in bar -2^31") << simple(4, 4) << 0.0 << kLeastInt << 2048.0;
    QTest::newRow("bar of 4e9 beats") << simple(1000000000, 1) << 0.0 << -1 << kMost;
    QTest::newRow("bar without length") << simple(0, 4) << 16.0 << -1 << 0.0;
    QTest::newRow("bar of infinite length") << simple(4, 0) << 16.0 << -1 << 0.0;
    QTest::newRow("bar that is no number") << simple(0, 0) << 16.0 << -1 << 0.0;
    QTest::newRow("bar of negative length") << simple(-4, 4) << 16.0 << -1 << 0.0;
}

void ArrangerLayoutTest::sceneSizeIsBoundedInADamagedSong()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, end);
    QFETCH(int, lastBar);
    HarmonyTrack chords;
    if (lastBar != -1)
        chords.blocks = {{.barIndex = lastBar, .events = {chord(1, 0.0, 4.0)}}};
    const auto song = project({melodyTrack({melody({}, 0.0, end)})}, chords, meter);
    QTEST(ArrangerLayout::sceneSize(*song, {}).width(), "width");
}

void ArrangerLayoutTest::sceneWithoutLanesIsTheBottomMargin()
{
    QCOMPARE(ArrangerLayout::sceneSize(Project(), {}), QSizeF(2048.0, 4.0));
}

// ---- Snapping ------------------------------------------------------------------------------

void ArrangerLayoutTest::snapStep_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("step");

    QTest::newRow("4/4") << simple(4, 4) << 1.0;
    QTest::newRow("3/4") << simple(3, 4) << 1.0;
    QTest::newRow("7/8") << simple(7, 8) << 1.0;
    QTest::newRow("6/8") << compound(6, 8) << 1.5;
    QTest::newRow("12/8") << compound(12, 8) << 1.5;
    QTest::newRow("6/8 that is not marked as compound") << simple(6, 8) << 1.0;
    QTest::newRow("compound without any length") << compound(0, 0) << 1.5;
}

void ArrangerLayoutTest::snapStep()
{
    QFETCH(TimeSignature, meter);
    QTEST(ArrangerLayout::snapBeats(meter), "step");
}

void ArrangerLayoutTest::placeFallsBackToItsStep_data()
{
    QTest::addColumn<double>("sceneX");
    QTest::addColumn<double>("step");
    QTest::addColumn<double>("beat");

    QTest::newRow("left edge") << 0.0 << 1.0 << 0.0;
    QTest::newRow("last pixel of a beat") << 31.9 << 1.0 << 0.0;
    QTest::newRow("next beat") << 32.0 << 1.0 << 1.0;
    QTest::newRow("not to the nearest") << 63.0 << 1.0 << 1.0;
    QTest::newRow("last pixel of a dotted beat") << 47.9 << 1.5 << 0.0;
    QTest::newRow("next dotted beat") << 48.0 << 1.5 << 1.5;
    QTest::newRow("third dotted beat") << 143.0 << 1.5 << 3.0;
    QTest::newRow("far along") << 32000.5 << 1.0 << 1000.0;
}

void ArrangerLayoutTest::placeFallsBackToItsStep()
{
    QFETCH(double, sceneX);
    QFETCH(double, step);
    QTEST(ArrangerLayout::stepAt(sceneX, step), "beat");
}

void ArrangerLayoutTest::placeFallsBackToItsBar_data()
{
    QTest::addColumn<double>("sceneX");
    QTest::addColumn<double>("bar");
    QTest::addColumn<double>("beat");

    QTest::newRow("first bar") << 127.9 << 4.0 << 0.0;
    QTest::newRow("second bar") << 128.0 << 4.0 << 4.0;
    QTest::newRow("bar of 3 beats") << 200.0 << 3.0 << 6.0;
    QTest::newRow("bar of 3.5 beats") << 230.0 << 3.5 << 7.0;
    QTest::newRow("left of the scene") << -1.0 << 4.0 << 0.0;
    QTest::newRow("far left of the scene") << -1e300 << 4.0 << 0.0;
    QTest::newRow("bar without length") << 300.0 << 0.0 << 0.0;
    QTest::newRow("bar of infinite length") << 300.0 << kInfinity << 0.0;
    QTest::newRow("bar of negative length") << 300.0 << -4.0 << 0.0;
    QTest::newRow("bar that is no number") << 300.0 << kNaN << 0.0;
}

void ArrangerLayoutTest::placeFallsBackToItsBar()
{
    QFETCH(double, sceneX);
    QFETCH(double, bar);
    QTEST(ArrangerLayout::barAt(sceneX, bar), "beat");
}

// ---- Lines of the grid ---------------------------------------------------------------------

void ArrangerLayoutTest::gridLines_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("left");
    QTest::addColumn<double>("right");
    QTest::addColumn<QString>("expected");

    QTest::newRow("4/4") << simple(4, 4) << 0.0 << 256.0 << "|0 1 2 3 |4 5 6 7 |8 9";
    QTest::newRow("3/4") << simple(3, 4) << 0.0 << 192.0 << "|0 1 2 |3 4 5 |6 7";
    QTest::newRow("2/4") << simple(2, 4) << 0.0 << 128.0 << "|0 1 |2 3 |4 5";
    QTest::newRow("6/8") << compound(6, 8) << 0.0 << 192.0 << "|0 1.5 |3 4.5 |6 7.5";
    QTest::newRow("5/4") << simple(5, 4) << 0.0 << 320.0 << "|0 1 2 3 4 |5 6 7 8 9 |10 11";
    QTest::newRow("12/8") << compound(12, 8) << 0.0 << 384.0
                          << "|0 1.5 3 4.5 |6 7.5 9 10.5 |12 13.5";
    QTest::newRow("2/2 has lines on quarters") << simple(2, 2) << 0.0 << 128.0 << "|0 1 2 3 |4 5";
    QTest::newRow("7/8 meets a beat at every other bar")
        << simple(7, 8) << 0.0 << 256.0 << "|0 1 2 3 4 5 6 |7 8 9";
    QTest::newRow("3/8 meets a beat at every other bar")
        << simple(3, 8) << 0.0 << 160.0 << "|0 1 2 |3 4 5 |6";
    // Three bars are a hair longer than five beats.
    QTest::newRow("5/12 meets a beat at every third bar")
        << simple(5, 12) << 0.0 << 160.0 << "|0 1 2 3 4 |5 6";
    QTest::newRow("from one line before the stretch")
        << simple(4, 4) << 160.0 << 224.0 << "|4 5 6 7 |8";
    QTest::newRow("from one line before, off the lines")
        << simple(4, 4) << 170.0 << 200.0 << "|4 5 6 7";
    QTest::newRow("6/8 from the middle") << compound(6, 8) << 150.0 << 200.0 << "|3 4.5 |6 7.5";
    QTest::newRow("left of the scene") << simple(4, 4) << -500.0 << 32.0 << "|0 1 2";
    QTest::newRow("wholly left of the scene") << simple(4, 4) << -500.0 << -400.0 << "";
    QTest::newRow("one pixel") << simple(4, 4) << 40.0 << 41.0 << "|0 1 2";
}

void ArrangerLayoutTest::gridLines()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, left);
    QFETCH(double, right);
    QTEST(written(ArrangerLayout::gridLines(left, right, meter)), "expected");
}

void ArrangerLayoutTest::gridCoversWhateverIsExposed()
{
    for (const TimeSignature& meter : {simple(4, 4), simple(5, 4), compound(6, 8)}) {
        const double step = meter.isCompound ? 48.0 : 32.0;
        for (double left = 0.0; left < 700.0; left += 13.7) {
            QSet<double> drawn;
            for (const GridLine& line : ArrangerLayout::gridLines(left, left + 333.3, meter))
                drawn.insert(line.beat * 32.0);
            for (double x = 0.0; x < 1100.0; x += step)
                QVERIFY2(x < left || x > left + 333.3 || drawn.contains(x),
                         qPrintable(QString::number(x)));
            QVERIFY(drawn.size() <= 15);
        }
    }
}

void ArrangerLayoutTest::gridOfADamagedMeterEnds_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<QString>("expected");

    QTest::newRow("numerator 0") << simple(0, 4) << "0 1 2 3";
    QTest::newRow("denominator 0") << simple(4, 0) << "|0 1 2 3";
    QTest::newRow("both 0") << simple(0, 0) << "0 1 2 3";
    QTest::newRow("numerator 10^9") << simple(1000000000, 4) << "|0 1 2 3";
    QTest::newRow("denominator 10^9") << simple(1, 1000000000) << "|0 |1 |2 |3";
    QTest::newRow("least numerator") << simple(kLeastInt, 1) << "|0 1 2 3";
}

void ArrangerLayoutTest::gridOfADamagedMeterEnds()
{
    QFETCH(TimeSignature, meter);
    QTEST(written(ArrangerLayout::gridLines(0.0, 64.0, meter)), "expected");
}

void ArrangerLayoutTest::gridOfAnAbsurdStretchEnds_data()
{
    QTest::addColumn<double>("left");
    QTest::addColumn<double>("right");
    QTest::addColumn<qsizetype>("most");

    QTest::newRow("without end") << 0.0 << kInfinity << qsizetype(1000001);
    QTest::newRow("1e300 pixels") << -1e300 << 1e300 << qsizetype(1000001);
    QTest::newRow("far away") << 1e300 << 2e300 << qsizetype(0);
    QTest::newRow("infinitely far away") << kInfinity << kInfinity << qsizetype(0);
    QTest::newRow("beyond what is drawn") << 33e6 << 34e6 << qsizetype(0);
    QTest::newRow("not a number") << kNaN << kNaN << qsizetype(0);
}

void ArrangerLayoutTest::gridOfAnAbsurdStretchEnds()
{
    QFETCH(double, left);
    QFETCH(double, right);
    QFETCH(qsizetype, most);
    for (const TimeSignature& meter : {simple(4, 4), compound(6, 8), simple(4, 0)})
        QVERIFY(ArrangerLayout::gridLines(left, right, meter).size() <= most);
}

// ---- Squares and grips ---------------------------------------------------------------------

void ArrangerLayoutTest::muteSquare_data()
{
    QTest::addColumn<QRect>("row");
    QTest::addColumn<QRect>("square");

    QTest::newRow("row of the chords") << QRect(0, 0, 170, 26) << QRect(147, 4, 16, 16);
    QTest::newRow("row of a track") << QRect(0, 44, 170, 42) << QRect(147, 56, 16, 16);
    QTest::newRow("row of a section") << QRect(0, 26, 170, 18) << QRect(147, 26, 16, 16);
    QTest::newRow("row half scrolled away") << QRect(0, -20, 170, 42) << QRect(147, -8, 16, 16);
}

void ArrangerLayoutTest::muteSquare()
{
    QFETCH(QRect, row);
    QTEST(ArrangerLayout::muteSquare(row), "square");
}

void ArrangerLayoutTest::gripIsSevenPixelsWideOnScreen_data()
{
    QTest::addColumn<double>("scale");
    QTest::addColumn<double>("lastOfBlock");
    QTest::addColumn<double>("firstOfGrip");

    QTest::newRow("at the start") << 1.0 << 121.0 << 121.01;
    QTest::newRow("far out") << 0.2 << 93.0 << 93.01;
    QTest::newRow("close up") << 6.0 << 126.83 << 126.84;
}

void ArrangerLayoutTest::gripIsSevenPixelsWideOnScreen()
{
    QFETCH(double, scale);
    QFETCH(double, lastOfBlock);
    QFETCH(double, firstOfGrip);
    const QRectF block(0.0, 3.0, 128.0, 36.0);
    QVERIFY(!ArrangerLayout::isOnGrip(lastOfBlock, block, scale));
    QVERIFY(ArrangerLayout::isOnGrip(firstOfGrip, block, scale));
    QVERIFY(ArrangerLayout::isOnGrip(128.0, block, scale));
    QVERIFY(!ArrangerLayout::isOnGrip(0.0, block, scale));
}

void ArrangerLayoutTest::gripIsAThirdOfAShortBlock()
{
    // A beat: at a scale of 0.2 it is 6.4 pixels wide on screen.
    const QRectF beat(96.0, 3.0, 32.0, 36.0);
    for (const double scale : {0.2, 0.3, 0.65}) {
        QVERIFY(!ArrangerLayout::isOnGrip(117.3, beat, scale));
        QVERIFY(ArrangerLayout::isOnGrip(117.4, beat, scale));
    }
    QVERIFY(!ArrangerLayout::isOnGrip(120.9, beat, 1.0));
    QVERIFY(ArrangerLayout::isOnGrip(121.1, beat, 1.0));
}

VELTA_GUILESS_TEST(ArrangerLayoutTest)

} // namespace ArrangerLayoutTests

#include "ArrangerLayoutTest.moc"
