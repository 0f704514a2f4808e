
#include "playback/PlaybackEngine.h"
#include "support/Files.h"
#include "support/ScreenListener.h"
#include "support/TestProgram.h"
#include "support/Tones.h"
#include "support/UserHome.h"
#include "support/WavFile.h"
#include "views/Painted.h"
#include "views/arranger/ArrangerStage.h"
#include "views/arranger/AudioClipItem.h"
#include "views/arranger/BlockEditor.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QToolTip>

namespace ClipGesturesTests {

using namespace ProjectBuilder;

namespace {

const BlockRef kVoice{BlockKind::Audio, 0, 0};

/// Ana's clip lies at beats 1 to 9, 256 pixels wide, its line at kAnaY: 15 pixels above it a gain
/// is 2. At 120 beats a minute a second is 64 pixels, and the clip plays 4.
constexpr double kStart = 1.0;
constexpr double kLength = 8.0;
constexpr int kTop = 131;
constexpr int kHandleY = kTop + 4;

/// The file that Ana's clip plays, in the folder of the song on a stage, at 8000 samples a second.
class SungFile {
public:
    SungFile(ArrangerStage& stage, const QList<float>& samples)
    {
        writeBytes(folder_.filePath("a.wav"), WavFile::bytes(samples, 8000));
        engine_.projectDir = folder_.path();
        stage.arranger.setContext(&stage.song, &engine_, nullptr);
    }

private:
    UserHome home_;
    QTemporaryDir folder_;
    PlaybackEngine engine_{nullptr, nullptr, nullptr};
};

} // namespace

/// The gain and the fades of a clip, by mouse and by keys.
class ClipGesturesTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theLineSetsTheGain_data();
    void theLineSetsTheGain();
    void aLineThatGoesSidewaysMovesItsBlock();
    void theLineLiesWhereTheGainHasIt();
    void handlesSetTheFades_data();
    void handlesSetTheFades();
    void fadesEndWithTheFile();
    void theEndBelowTheHandleStretches();
    void blocksTooNarrowForHandlesMove();
    void theMouseShowsWhatItWouldTake_data();
    void theMouseShowsWhatItWouldTake();
    void aRightClickOnAHandleDeletes();
    void aDragIsOneEdit();
    void aPressAloneIsNoEdit();
    void aDragWhoseButtonCameUpElsewhereIsOver();
    void aDragLosesAClipThatSomebodyElseChanges();
    void whatReadsTheSongEndsTheDrag();

    void keysChangeTheLevels_data();
    void keysChangeTheLevels();
    void aKeyThatIsHeldIsOneEdit();
    void keysChangeAllSelectedClips();
    void aKeyThatIsHeldOnSeveralClipsIsOneEdit();
    void keysLeaveOtherBlocksAlone();
    void aVoiceWithoutALengthIsTakenAndHeardWhole();
    void theFocusTakesTheRunAlong();

    void theTipTellsTheValue();
    void theAccessibleClipTellsItsLevels();
    void theVoiceIsSeen();
    void aVoiceWithoutAFileHasItsHandles();

private:
    AudioClip& voice() { return stage_->song.audioTracks[0].clips[0]; }

    ClipLevels levels() { return ClipEdits::levelsOf(voice()); }

    TrackArranger& arranger() { return stage_->arranger; }

    /// From a place over some pixels, by a mouse that goes straight there in a few moves.
    void drag(const QPoint& place, const QPoint& way)
    {
        stage_->press(place);
        for (int i = 1; i <= 4; ++i)
            stage_->move(place + way * i / 4);
        stage_->release(place + way);
    }

    /// Pulls the line up to a gain of 1.4 and holds it there. The place where it was.
    QPoint holdTheLine() const
    {
        const QPoint line = stage_->at(5.0, kAnaY);
        stage_->press(line);
        stage_->move(line - QPoint(0, 6));
        return line;
    }

    void rebuild() { emit stage_->song.changed(); }

    std::unique_ptr<ArrangerStage> stage_;
    std::unique_ptr<QSignalSpy> edits_;
};

void ClipGesturesTest::init()
{
    stage_ = std::make_unique<ArrangerStage>();
    voice().offsetBeats = kStart;
    voice().durationBeats = kLength;
    rebuild();
    edits_ = std::make_unique<QSignalSpy>(&arranger(), &TrackArranger::edited);
}

void ClipGesturesTest::cleanup()
{
    edits_.reset();
    stage_.reset();
}

void ClipGesturesTest::theLineSetsTheGain_data()
{
    QTest::addColumn<int>("way");
    QTest::addColumn<float>("gain");
    QTest::newRow("up") << -6 << 1.4F;
    QTest::newRow("down") << 9 << 0.4F;
    QTest::newRow("to the top and beyond") << -40 << 2.0F;
    QTest::newRow("to the bottom and beyond") << 200 << 0.0F;
}

void ClipGesturesTest::theLineSetsTheGain()
{
    QFETCH(int, way);
    QFETCH(float, gain);
    drag(stage_->at(5.0, kAnaY), {1, way});
    QCOMPARE(levels(), (ClipLevels{gain, 0.0F, 0.0F}));
    QCOMPARE(voice().offsetBeats, kStart);
    QCOMPARE(edits_->count(), 1);
    QCOMPARE(stage_->selected(), QList<BlockRef>{kVoice});
}

void ClipGesturesTest::aLineThatGoesSidewaysMovesItsBlock()
{
    drag(stage_->at(5.0, kAnaY), {64, 3});
    QCOMPARE(voice().offsetBeats, kStart + 2.0);
    QCOMPARE(levels(), ClipLevels());
    QCOMPARE(edits_->count(), 1);
}

void ClipGesturesTest::theLineLiesWhereTheGainHasIt()
{
    voice().gain = 0.4F;
    rebuild();
    drag(stage_->at(5.0, kAnaY + 9), {0, -9});
    QCOMPARE(levels().gain, 1.0F);
    // The middle is the line no more, and moves the block whichever way it is drawn.
    voice().gain = 0.4F;
    rebuild();
    drag(stage_->at(5.0, kAnaY), {32, -15});
    QCOMPARE(levels().gain, 0.4F);
    QCOMPARE(voice().offsetBeats, kStart + 1.0);
}

void ClipGesturesTest::handlesSetTheFades_data()
{
    QTest::addColumn<double>("zoom");
    QTest::newRow("as it is") << 1.0;
    QTest::newRow("closer") << 1.5;
    QTest::newRow("from far away") << 0.5;
}

void ClipGesturesTest::handlesSetTheFades()
{
    QFETCH(double, zoom);
    arranger().zoomHorizontal(zoom);
    const auto pixels = [zoom](double seconds) { return qRound(seconds * 64.0 * zoom); };
    drag(stage_->at(kStart, kHandleY) + QPoint(3, 0), {pixels(2.0), 2});
    QCOMPARE(levels(), (ClipLevels{1.0F, 2.0F, 0.0F}));
    drag(stage_->at(kStart + kLength, kHandleY) - QPoint(3, 0), {-pixels(1.5), 0});
    QCOMPARE(levels(), (ClipLevels{1.0F, 2.0F, 1.5F}));
    // From where the handles are by now.
    drag(stage_->at(kStart + 4.0, kHandleY), {-pixels(1.0), 0});
    drag(stage_->at(kStart + kLength - 3.0, kHandleY), {pixels(9.0), 0});
    QCOMPARE(levels(), (ClipLevels{1.0F, 1.0F, 0.0F}));
    QCOMPARE(edits_->count(), 4);
    QCOMPARE(voice().offsetBeats, kStart);
    QCOMPARE(voice().durationBeats, kLength);
}

void ClipGesturesTest::fadesEndWithTheFile()
{
    // Of the 4 seconds of the block the file plays 3.
    const SungFile file(*stage_, Tones::sine(440.0, 8000, 3 * 8000));
    const auto* item = dynamic_cast<AudioClipItem*>(arranger().scene()->itemOf(kVoice));
    QVERIFY(item);
    QTRY_COMPARE(item->clip().playedSeconds, 3.0);
    drag(stage_->at(kStart + 6.0, kHandleY) - QPoint(2, 0), {-64, 0});
    QCOMPARE(levels(), (ClipLevels{1.0F, 0.0F, 1.0F}));
    arranger().setContext(&stage_->song, nullptr, nullptr);
}

void ClipGesturesTest::theEndBelowTheHandleStretches()
{
    for (const int y : {kAnaY - 4, kAnaY, kAnaY + 10})
        drag(stage_->at(voice().offsetBeats + voice().durationBeats, y) - QPoint(3, 0), {32, 0});
    QCOMPARE(voice().durationBeats, kLength + 3.0);
    QCOMPARE(levels(), ClipLevels());
}

void ClipGesturesTest::blocksTooNarrowForHandlesMove()
{
    voice().durationBeats = 1.0;
    rebuild();
    drag(stage_->at(kStart, kHandleY) + QPoint(3, 0), {64, 0});
    QCOMPARE(voice().offsetBeats, kStart + 2.0);
    drag(stage_->at(kStart + 2.0, kAnaY) + QPoint(10, 0), {1, -10});
    QCOMPARE(levels(), ClipLevels());
}

void ClipGesturesTest::theMouseShowsWhatItWouldTake_data()
{
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<Qt::CursorShape>("cursor");
    const int left = qRound(kStart * 32.0);
    const int right = qRound((kStart + kLength) * 32.0);
    QTest::newRow("the line") << QPoint(200, kAnaY) << Qt::SizeVerCursor;
    QTest::newRow("fade in") << QPoint(left + 3, kHandleY) << Qt::SizeHorCursor;
    QTest::newRow("fade out") << QPoint(right - 3, kHandleY) << Qt::SizeHorCursor;
    QTest::newRow("the end") << QPoint(right - 3, kAnaY + 10) << Qt::SizeHorCursor;
    QTest::newRow("beside the line") << QPoint(200, kAnaY + 10) << Qt::ArrowCursor;
}

void ClipGesturesTest::theMouseShowsWhatItWouldTake()
{
    QFETCH(QPoint, place);
    QFETCH(Qt::CursorShape, cursor);
    stage_->move(place);
    QCOMPARE(stage_->grid()->cursor().shape(), cursor);
}

void ClipGesturesTest::aRightClickOnAHandleDeletes()
{
    stage_->click(stage_->at(kStart, kHandleY) + QPoint(3, 0), Qt::RightButton);
    QVERIFY(stage_->song.audioTracks[0].clips.isEmpty());
}

void ClipGesturesTest::aDragIsOneEdit()
{
    const QPoint line = stage_->at(5.0, kAnaY);
    stage_->press(line);
    for (int i = 1; i <= 10; ++i)
        stage_->move(line - QPoint(0, i));
    QVERIFY(levels().gain > 1.5F);
    QCOMPARE(edits_->count(), 0);
    stage_->release(line - QPoint(0, 10));
    QCOMPARE(edits_->count(), 1);
}

void ClipGesturesTest::aPressAloneIsNoEdit()
{
    voice().gain = 0.72F;
    rebuild();
    stage_->click(stage_->at(5.0, kAnaY + 4));
    stage_->click(stage_->at(kStart, kHandleY) + QPoint(3, 0));
    QCOMPARE(levels().gain, 0.72F);
    QCOMPARE(edits_->count(), 0);
    QCOMPARE(stage_->selected(), QList<BlockRef>{kVoice});
}

void ClipGesturesTest::aDragWhoseButtonCameUpElsewhereIsOver()
{
    const QPoint line = holdTheLine();
    stage_->moveWithoutButtons(line + QPoint(0, 6));
    QCOMPARE(levels().gain, 1.4F);
    QCOMPARE(edits_->count(), 1);
}

void ClipGesturesTest::aDragLosesAClipThatSomebodyElseChanges()
{
    const QPoint line = holdTheLine();
    voice().gain = 0.1F;
    stage_->move(line - QPoint(0, 9));
    stage_->release(line);
    QCOMPARE(levels().gain, 0.1F);
    QCOMPARE(edits_->count(), 0);
}

void ClipGesturesTest::whatReadsTheSongEndsTheDrag()
{
    const QPoint line = holdTheLine();
    arranger().endDrag();
    QCOMPARE(edits_->count(), 1);
    stage_->move(line + QPoint(0, 6));
    stage_->release(line);
    QCOMPARE(levels().gain, 1.4F);
    QCOMPARE(edits_->count(), 1);
}

void ClipGesturesTest::keysChangeTheLevels_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("alt");
    QTest::addColumn<float>("gain");
    QTest::addColumn<float>("fadeIn");
    QTest::addColumn<float>("fadeOut");
    QTest::newRow("up") << int(Qt::Key_Up) << false << 1.05F << 1.0F << 1.0F;
    QTest::newRow("down") << int(Qt::Key_Down) << false << 0.95F << 1.0F << 1.0F;
    QTest::newRow("later fade in") << int(Qt::Key_Right) << true << 1.0F << 1.05F << 1.0F;
    QTest::newRow("earlier fade in") << int(Qt::Key_Left) << true << 1.0F << 0.95F << 1.0F;
    QTest::newRow("longer fade out") << int(Qt::Key_Up) << true << 1.0F << 1.0F << 1.05F;
    QTest::newRow("shorter fade out") << int(Qt::Key_Down) << true << 1.0F << 1.0F << 0.95F;
}

void ClipGesturesTest::keysChangeTheLevels()
{
    QFETCH(int, key);
    QFETCH(bool, alt);
    QFETCH(float, gain);
    QFETCH(float, fadeIn);
    QFETCH(float, fadeOut);
    voice().fadeInSeconds = 1.0F;
    voice().fadeOutSeconds = 1.0F;
    rebuild();
    arranger().goToBlock(kVoice);
    stage_->key(static_cast<Qt::Key>(key), alt ? Qt::AltModifier : Qt::NoModifier);
    QCOMPARE(levels(), (ClipLevels{gain, fadeIn, fadeOut}));
    QCOMPARE(edits_->count(), 1);
    QCOMPARE(stage_->selected(), QList<BlockRef>{kVoice});
}

void ClipGesturesTest::aKeyThatIsHeldIsOneEdit()
{
    arranger().goToBlock(kVoice);
    QTest::keyPress(&arranger(), Qt::Key_Up);
    for (int i = 0; i < 3; ++i) {
        QKeyEvent again(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(&arranger(), &again);
    }
    QCOMPARE(levels().gain, 1.2F);
    QCOMPARE(edits_->count(), 0);
    QTest::keyRelease(&arranger(), Qt::Key_Up);
    QCOMPARE(edits_->count(), 1);
}

void ClipGesturesTest::keysChangeAllSelectedClips()
{
    const BlockRef beto{BlockKind::Audio, 1, 0};
    AudioClip& other = stage_->song.audioTracks[1].clips[0];
    voice().gain = 1.5F;
    other.gain = 0.5F;
    rebuild();
    const QList<BlockRef> selected{{BlockKind::Melody, 0, 0}, kVoice, beto};
    const auto tracks = stage_->song.tracks;
    arranger().blocks()->selectAll(selected);
    stage_->key(Qt::Key_Up);
    QCOMPARE(voice().gain, 1.55F);
    QCOMPARE(other.gain, 0.55F);
    QCOMPARE(edits_->count(), 1);
    stage_->key(Qt::Key_Right, Qt::AltModifier);
    stage_->key(Qt::Key_Up, Qt::AltModifier);
    QCOMPARE(levels(), (ClipLevels{1.55F, 0.05F, 0.05F}));
    QCOMPARE(ClipEdits::levelsOf(other), (ClipLevels{0.55F, 0.05F, 0.05F}));
    QCOMPARE(edits_->count(), 3);
    QCOMPARE(arranger().blocks()->selected(), selected);
    QCOMPARE(stage_->song.tracks, tracks);
}

void ClipGesturesTest::aKeyThatIsHeldOnSeveralClipsIsOneEdit()
{
    AudioClip& other = stage_->song.audioTracks[1].clips[0];
    other.gain = 1.9F;
    rebuild();
    arranger().blocks()->selectAll({kVoice, {BlockKind::Audio, 1, 0}});
    for (const bool repeated : {false, true, true, true}) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier, QString(), repeated);
        QApplication::sendEvent(&arranger(), &press);
    }
    QCOMPARE(edits_->count(), 0);
    QTest::keyRelease(&arranger(), Qt::Key_Up);
    QCOMPARE(edits_->count(), 1);
    // Each as far as there is.
    QCOMPARE(levels().gain, 1.2F);
    QCOMPARE(other.gain, 2.0F);
}

// Its record says nothing of its length, and it sounds to the end of its file.
void ClipGesturesTest::aVoiceWithoutALengthIsTakenAndHeardWhole()
{
    voice().durationBeats = 0.0;
    rebuild();
    const QPoint place = stage_->at(kStart, kAnaY) + QPoint(3, 10);
    stage_->press(place);
    stage_->release(place);
    QCOMPARE(stage_->selected(), QList<BlockRef>{kVoice});
    stage_->key(Qt::Key_Up);
    QCOMPARE(levels().gain, 1.05F);
    QCOMPARE(voice().durationBeats, 0.0);
    drag(place, {64, 0});
    QCOMPARE(voice().offsetBeats, kStart + 2.0);
    QCOMPARE(voice().durationBeats, 0.0);
}

void ClipGesturesTest::keysLeaveOtherBlocksAlone()
{
    const auto before = stage_->song.tracks;
    arranger().goToBlock({BlockKind::Melody, 0, 0});
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Down})
        stage_->key(key);
    stage_->key(Qt::Key_Right, Qt::AltModifier);
    QCOMPARE(stage_->song.tracks, before);
    QCOMPARE(edits_->count(), 0);
}

void ClipGesturesTest::theFocusTakesTheRunAlong()
{
    arranger().goToBlock(kVoice);
    arranger().setFocus();
    QTest::keyPress(&arranger(), Qt::Key_Up);
    QFocusEvent gone(QEvent::FocusOut);
    QApplication::sendEvent(&arranger(), &gone);
    QCOMPARE(edits_->count(), 1);
}

void ClipGesturesTest::theTipTellsTheValue()
{
    const QPoint line = holdTheLine();
    QCOMPARE(QToolTip::text(), QStringLiteral("Volumen: 140 %"));
    stage_->release(line - QPoint(0, 6));
    stage_->move(line - QPoint(0, 6));
    const QGraphicsItem* item = arranger().scene()->itemOf(kVoice);
    QVERIFY(item->toolTip().startsWith("Volumen: 140 %"));
    stage_->move(line + QPoint(0, 6));
    QCOMPARE(item->toolTip(), QString());
}

void ClipGesturesTest::theAccessibleClipTellsItsLevels()
{
    const auto valueAt = [this](double beat) {
        const QPoint place = stage_->grid()->mapToGlobal(stage_->at(beat, kAnaY));
        QAccessibleInterface* item =
            QAccessible::queryAccessibleInterface(arranger().view())->childAt(place.x(), place.y());
        return item->text(QAccessible::Value) + u'|' + item->text(QAccessible::Name);
    };
    QCOMPARE(valueAt(5.0), QStringLiteral("Volumen: 100 %, Entra de a poco: 0 s, Se va de a poco: "
                                          "0 s|Voz, a.wav, compás 1, 2 compases"));
    voice().gain = 0.85F;
    voice().fadeOutSeconds = 2.0F;
    rebuild();
    QCOMPARE(valueAt(5.0),
             QStringLiteral("Volumen: 85 %, Entra de a poco: 0 s, Se va de a poco: 2 s|Voz, a.wav, "
                            "compás 1, 2 compases, Volumen: 85 %, Entra de a poco: 0 s, Se va de a "
                            "poco: 2 s"));
}

void ClipGesturesTest::theVoiceIsSeen()
{
    // Loud, still and loud again, a second each; what follows is behind the file.
    const QList<float> loud = Tones::sine(440.0, 8000, 8000, 0.9);
    const SungFile file(*stage_, loud + Tones::silence(8000) + loud);
    const auto* item = dynamic_cast<AudioClipItem*>(arranger().scene()->itemOf(kVoice));
    QTRY_COMPARE(item->clip().playedSeconds, 3.0);
    // Five pixels below the line, at a moment of the clip.
    const auto isWave = [this](double seconds) {
        const QImage grid = stage_->grid()->grab().toImage();
        const QPoint place = stage_->at(kStart + 2.0 * seconds, kAnaY + 5);
        return grid.pixelColor(place * grid.devicePixelRatio()).lightness() < 40;
    };
    QVERIFY(isWave(0.75));
    QVERIFY(!isWave(1.5));
    QVERIFY(isWave(2.5));
    QVERIFY(!isWave(3.5));
    // What is heard less is seen less.
    voice().gain = 0.2F;
    rebuild();
    QVERIFY(!isWave(0.75));
    voice().gain = 1.0F;
    voice().fadeOutSeconds = 2.9F;
    rebuild();
    QVERIFY(!isWave(2.5));
    arranger().setContext(&stage_->song, nullptr, nullptr);
}

void ClipGesturesTest::aVoiceWithoutAFileHasItsHandles()
{
    UserHome home;
    PlaybackEngine engine(nullptr, nullptr, nullptr);
    QTemporaryDir folder;
    engine.projectDir = folder.path();
    arranger().setContext(&stage_->song, &engine, nullptr);
    QTest::qWait(50);
    stage_->grid()->grab();
    drag(stage_->at(kStart, kHandleY) + QPoint(3, 0), {64, 0});
    QCOMPARE(levels(), (ClipLevels{1.0F, 1.0F, 0.0F}));
    arranger().setContext(&stage_->song, nullptr, nullptr);
}

VELTA_TEST(ClipGesturesTest)

} // namespace ClipGesturesTests

#include "ClipGesturesTest.moc"
