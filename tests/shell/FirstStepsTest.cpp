#include "shell/FirstSteps.h"

#include "model/Track.h"
#include "support/FluidSpy.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoRollCanvas.h"

#include <QGraphicsView>
#include <QScrollBar>
#include <QTest>

namespace FirstStepsTests {

/// What an empty work says of how it begins.
class FirstStepsTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void cleanup() { stage_.reset(); }

    void anEmptyWorkTellsThreeStepsInEachEditor();
    void theFirstNoteEndsThem();
    void undoingTheFirstNoteBringsThemBack();
    void theFirstChordEndsThem();
    void anotherWorkDecidesAnew();
    void clicksGoThroughThem();
    void theyStayWhereTheyAreWhileTheViewScrolls();
    void aViewWithoutRoomGoesWithoutThem();
    void theyAreNoItemsOfTheScene();

private:
    QList<FirstSteps*> sheets() { return stage_->window().findChildren<FirstSteps*>(); }

    bool allAre(bool seen)
    {
        return sheets().size() == 2 && std::ranges::all_of(sheets(), [&](const FirstSteps* sheet) {
                   return sheet->isVisible() == seen;
               });
    }

    PianoRollCanvas& roll() { return *stage_->window().findChild<PianoRollCanvas*>(); }

    QGraphicsView& rollView() { return *roll().findChild<QGraphicsView*>(); }

    void writeNote() { QTest::mouseClick(rollView().viewport(), Qt::LeftButton, {}, {40, 40}); }

    std::unique_ptr<WindowStage> stage_;
};

void FirstStepsTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
    stage_->window().resize(1366, 768);
    QVERIFY(stage_->showWindow());
}

void FirstStepsTest::anEmptyWorkTellsThreeStepsInEachEditor()
{
    QVERIFY(allAre(true));
    for (const FirstSteps* sheet : sheets()) {
        QCOMPARE(sheet->text().count('\n'), 2);
        QVERIFY(sheet->width() >= sheet->sizeHint().width());
    }
}

void FirstStepsTest::theFirstNoteEndsThem()
{
    writeNote();
    QVERIFY(stage_->song().tracks[0].melodyBlocks[0].notes.size() == 1);
    QVERIFY(allAre(false));
}

void FirstStepsTest::undoingTheFirstNoteBringsThemBack()
{
    writeNote();
    stage_->choose("Deshacer");
    QVERIFY(allAre(true));
    stage_->choose("Rehacer");
    QVERIFY(allAre(false));
}

void FirstStepsTest::theFirstChordEndsThem()
{
    auto& arranger = *stage_->window().findChild<TrackArranger*>();
    arranger.setFocus();
    QTest::keyClick(&arranger, Qt::Key_C);
    QVERIFY(!stage_->song().harmonyTrack.isEmpty());
    QVERIFY(allAre(false));
}

void FirstStepsTest::anotherWorkDecidesAnew()
{
    writeNote();
    stage_->window().startBlankProject();
    QVERIFY(allAre(true));
}

void FirstStepsTest::clicksGoThroughThem()
{
    FirstSteps* sheet = rollView().findChild<FirstSteps*>();
    QVERIFY(sheet);
    const QPoint inWindow = sheet->mapTo(&stage_->window(), sheet->rect().center());
    QCOMPARE(stage_->window().childAt(inWindow), rollView().viewport());
}

void FirstStepsTest::theyStayWhereTheyAreWhileTheViewScrolls()
{
    const FirstSteps* sheet = rollView().findChild<FirstSteps*>();
    const QPoint before = sheet->pos();
    rollView().horizontalScrollBar()->setValue(rollView().horizontalScrollBar()->maximum());
    QVERIFY(rollView().horizontalScrollBar()->value() > 0);
    QCOMPARE(sheet->pos(), before);
}

void FirstStepsTest::aViewWithoutRoomGoesWithoutThem()
{
    FirstSteps* sheet = rollView().findChild<FirstSteps*>();
    const QSize roomy = roll().size();
    roll().resize(roomy.width(), sheet->height() + 40);
    QVERIFY(!sheet->isVisible());
    roll().resize(sheet->width(), roomy.height());
    QVERIFY(!sheet->isVisible());
    roll().resize(roomy);
    QVERIFY(sheet->isVisible());
    QVERIFY(rollView().viewport()->geometry().contains(sheet->geometry()));
}

void FirstStepsTest::theyAreNoItemsOfTheScene()
{
    const qsizetype items = rollView().scene()->items().size();
    qDeleteAll(sheets());
    QCOMPARE(rollView().scene()->items().size(), items);
}

VELTA_TEST(FirstStepsTest)

} // namespace FirstStepsTests

#include "FirstStepsTest.moc"
