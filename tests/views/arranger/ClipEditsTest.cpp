#include "views/arranger/ClipEdits.h"

#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QTest>

#include <limits>

namespace ClipEditsTests {

using namespace ProjectBuilder;

class ClipEditsTest : public QObject {
    Q_OBJECT

private slots:
    void levelsAreThoseOfTheRecord();
    void otherReferencesDoNothing_data();
    void otherReferencesDoNothing();
    void aGestureLeavesWholeSteps_data();
    void aGestureLeavesWholeSteps();
    void keysGoFromStepToStep_data();
    void keysGoFromStepToStep();
    void aRunOfKeysComesBackToWhereItBegan();
    void aClipLastsItsBeats();
};

void ClipEditsTest::levelsAreThoseOfTheRecord()
{
    const auto song = project();
    song->audioTracks = {voiceTrack({clip("a.wav", 0.0, 4.0), clip("b.wav", 8.0, 4.0)})};
    const BlockRef second{BlockKind::Audio, 0, 1};
    QCOMPARE(ClipEdits::levelsOf(*song, second), ClipLevels());
    ClipEdits::setLevels(*song, second, {0.5F, 0.25F, 2.0F});
    AudioClip expected = clip("b.wav", 8.0, 4.0);
    expected.gain = 0.5F;
    expected.fadeInSeconds = 0.25F;
    expected.fadeOutSeconds = 2.0F;
    QCOMPARE(song->audioTracks[0].clips[1], expected);
    QCOMPARE(song->audioTracks[0].clips[0], clip("a.wav", 0.0, 4.0));
    ClipEdits::setLevels(*song, {BlockKind::Audio, 0, 0}, {0.75F, 0.0F, 0.0F});
    QCOMPARE(song->audioTracks[0].clips[0].gain, 0.75F);
}

void ClipEditsTest::otherReferencesDoNothing_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("track");
    QTest::addColumn<int>("block");
    QTest::newRow("a melody") << 0 << 0 << 0;
    QTest::newRow("a chord") << 3 << 0 << 0;
    QTest::newRow("no track") << 2 << 1 << 0;
    QTest::newRow("no clip") << 2 << 0 << 1;
    QTest::newRow("below") << 2 << -1 << 0;
    QTest::newRow("below in the track") << 2 << 0 << -1;
}

void ClipEditsTest::otherReferencesDoNothing()
{
    QFETCH(int, kind);
    QFETCH(int, track);
    QFETCH(int, block);
    const auto song = project({melodyTrack({melody({})})});
    song->audioTracks = {voiceTrack({clip("a.wav", 0.0, 4.0)})};
    const BlockRef stale{static_cast<BlockKind>(kind), track, block};
    QVERIFY(!ClipEdits::clipOf(*song, stale));
    QVERIFY(!ClipEdits::levelsOf(*song, stale));
    ClipEdits::setLevels(*song, stale, {0.0F, 1.0F, 1.0F});
    QCOMPARE(song->audioTracks[0].clips[0], clip("a.wav", 0.0, 4.0));
}

void ClipEditsTest::aGestureLeavesWholeSteps_data()
{
    QTest::addColumn<int>("handle");
    QTest::addColumn<double>("value");
    QTest::addColumn<float>("left");
    const int gain = static_cast<int>(ClipHandle::Gain);
    QTest::newRow("gain to the nearest") << gain << 0.73 << 0.75F;
    QTest::newRow("gain at most doubles") << gain << 7.0 << 2.0F;
    QTest::newRow("gain is not negative") << gain << -0.4 << 0.0F;
    QTest::newRow("gain that is no number")
        << gain << std::numeric_limits<double>::quiet_NaN() << 0.0F;
    // The clip plays 4 seconds, and the other fade takes 1 of them.
    for (const ClipHandle handle : {ClipHandle::FadeIn, ClipHandle::FadeOut}) {
        const int fade = static_cast<int>(handle);
        const char* name = handle == ClipHandle::FadeIn ? "in" : "out";
        QTest::addRow("fade %s to the nearest", name) << fade << 0.52 << 0.5F;
        QTest::addRow("fade %s leaves the other its room", name) << fade << 3.5 << 3.0F;
        QTest::addRow("fade %s is not negative", name) << fade << -1.0 << 0.0F;
    }
}

void ClipEditsTest::aGestureLeavesWholeSteps()
{
    QFETCH(int, handle);
    QFETCH(double, value);
    QFETCH(float, left);
    ClipLevels expected{1.0F, 1.0F, 1.0F};
    const ClipLevels changed =
        ClipEdits::with(expected, static_cast<ClipHandle>(handle), value, 4.0);
    (handle == 0 ? expected.gain : handle == 1 ? expected.fadeIn : expected.fadeOut) = left;
    QCOMPARE(changed, expected);
}

void ClipEditsTest::keysGoFromStepToStep_data()
{
    QTest::addColumn<float>("gain");
    QTest::addColumn<int>("steps");
    QTest::addColumn<float>("left");
    QTest::newRow("up") << 1.0F << 1 << 1.05F;
    QTest::newRow("down") << 1.0F << -1 << 0.95F;
    QTest::newRow("up to a step") << 0.73F << 1 << 0.75F;
    QTest::newRow("down to a step") << 0.73F << -1 << 0.7F;
    QTest::newRow("not below none") << 0.0F << -1 << 0.0F;
    QTest::newRow("not beyond the most") << 2.0F << 1 << 2.0F;
    QTest::newRow("back from more than the most") << 5.0F << -1 << 2.0F;
}

void ClipEditsTest::keysGoFromStepToStep()
{
    QFETCH(float, gain);
    QFETCH(int, steps);
    QFETCH(float, left);
    QCOMPARE(ClipEdits::stepped({gain, 0.0F, 0.0F}, ClipHandle::Gain, steps, 4.0),
             (ClipLevels{left, 0.0F, 0.0F}));
}

void ClipEditsTest::aRunOfKeysComesBackToWhereItBegan()
{
    for (const ClipHandle handle : {ClipHandle::Gain, ClipHandle::FadeIn, ClipHandle::FadeOut}) {
        ClipLevels levels{1.0F, 0.5F, 0.5F};
        const ClipLevels original = levels;
        for (int i = 0; i < 9; ++i)
            levels = ClipEdits::stepped(levels, handle, 1, 10.0);
        QVERIFY(levels != original);
        for (int i = 0; i < 9; ++i)
            levels = ClipEdits::stepped(levels, handle, -1, 10.0);
        QCOMPARE(levels, original);
    }
}

void ClipEditsTest::aClipLastsItsBeats()
{
    auto song = project();
    song->bpm = 90;
    QCOMPARE(ClipEdits::secondsOf(*song, clip("a.wav", 2.0, 6.0)), 4.0);
    QCOMPARE(ClipEdits::secondsOf(*song, clip("a.wav", 2.0, -6.0)), 0.0);
}

VELTA_GUILESS_TEST(ClipEditsTest)

} // namespace ClipEditsTests

#include "ClipEditsTest.moc"
