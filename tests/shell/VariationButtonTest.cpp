#include "shell/VariationButton.h"

#include "support/ContextTranslator.h"
#include "support/TestProgram.h"
#include "views/SectionWords.h"

#include <QAccessible>
#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace VariationButtonTests {

namespace {

/// A mouse with its left button held, as the platform tells of it.
void moveHeld(QWidget* widget, const QPoint& place, Qt::MouseButtons buttons = Qt::LeftButton)
{
    QMouseEvent event(QEvent::MouseMove, place, widget->mapToGlobal(place), Qt::NoButton, buttons,
                      Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

void press(QWidget* widget, const QPoint& place)
{
    QTest::mousePress(widget, Qt::LeftButton, {}, place);
}

void release(QWidget* widget, const QPoint& place)
{
    QTest::mouseRelease(widget, Qt::LeftButton, {}, place);
}

constexpr QPoint kStart(9, 11);

} // namespace

class VariationButtonTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void itShowsTheNumberOfItsVariant();
    void theTooltipTellsBothGestures_data();
    void theTooltipTellsBothGestures();
    void aScreenReaderSaysSectionAndNumber();
    void sectionsStandInTheOrderOfASong();
    void wordsAreTranslated();

    void aClickIsAClick();
    void theKeyboardClicks();
    void aWobbleStaysAClick();
    void aMoveOfTheDragDistanceIsADrag_data();
    void aMoveOfTheDragDistanceIsADrag();
    void theDistanceCountsFromTheLastPress();
    void aMoveWithoutTheLeftButtonIsNoDrag_data();
    void aMoveWithoutTheLeftButtonIsNoDrag();
    void anotherButtonNeitherClicksNorDrags();

    void aDragCarriesTheLoop_data();
    void aDragCarriesTheLoop();
    void aDragBelongsToTheButton();
    void theButtonIsUpWhileItIsDragged();
    void afterADragThereIsNoClick();
    void movesAfterADragNeitherClickNorDrag();
    void theNextPressIsANewOne();
    void itTellsWhenADragIsOver();
    void aDragThatThePlatformRefusesIsNoClickEither();

private:
    std::unique_ptr<VariationButton> button_;
    std::unique_ptr<QSignalSpy> clicks_;
    /// Drags that were run.
    int drags_ = 0;
};

void VariationButtonTest::init()
{
    button_ = std::make_unique<VariationButton>("zamba", "bombo", LoopSection::Intro, 3);
    drags_ = 0;
    button_->setDragRunner([this](QDrag&) { ++drags_; });
    button_->resize(30, 30);
    button_->show();
    QVERIFY(QTest::qWaitForWindowExposed(button_.get()));
    clicks_ = std::make_unique<QSignalSpy>(button_.get(), &QToolButton::clicked);
}

void VariationButtonTest::cleanup()
{
    clicks_.reset();
    button_.reset();
}

// ---- What it shows -------------------------------------------------------------------------

void VariationButtonTest::itShowsTheNumberOfItsVariant()
{
    QCOMPARE(button_->text(), "3");
    QCOMPARE(button_->objectName(), "btn_toolbar");
    QCOMPARE(button_->cursor().shape(), Qt::OpenHandCursor);
    QVERIFY(button_->icon().isNull());
    QVERIFY(!button_->isCheckable());
}

void VariationButtonTest::theTooltipTellsBothGestures_data()
{
    QTest::addColumn<int>("section");
    QTest::addColumn<int>("variantIndex");
    QTest::addColumn<QString>("start");
    QTest::newRow("Intro") << 0 << 1 << "Introducción 1";
    QTest::newRow("Intermedio") << 1 << 2 << "Intermedio 2";
    QTest::newRow("Normal") << 2 << 12 << "Normal 12";
    QTest::newRow("Final") << 3 << 4 << "Final 4";
    QTest::newRow("a section of no name is Normal") << 4 << 1 << "Normal 1";
    QTest::newRow("negative numbers stand as they are") << -1 << -7 << "Normal -7";
}

void VariationButtonTest::theTooltipTellsBothGestures()
{
    QFETCH(int, section);
    QFETCH(int, variantIndex);
    QFETCH(QString, start);
    const VariationButton button("z", "b", static_cast<LoopSection>(section), variantIndex);
    QCOMPARE(button.toolTip(), start + " — un click la pone donde está el cabezal; arrastrala al "
                                       "compás que quieras");
    QCOMPARE(button.text(), QString::number(variantIndex));
}

void VariationButtonTest::aScreenReaderSaysSectionAndNumber()
{
    const QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(button_.get());
    QVERIFY(reader);
    QCOMPARE(reader->text(QAccessible::Name), "Introducción 3");
}

void VariationButtonTest::sectionsStandInTheOrderOfASong()
{
    QStringList words;
    for (const LoopSection section : kSectionOrder)
        words.append(sectionWord(section));
    QCOMPARE(words, (QStringList{"Introducción", "Normal", "Intermedio", "Final"}));
}

void VariationButtonTest::wordsAreTranslated()
{
    ContextTranslator translator;
    QApplication::installTranslator(&translator);
    const VariationButton button("z", "b", LoopSection::Final, 2);
    QApplication::removeTranslator(&translator);
    QCOMPARE(button.toolTip(),
             "VariationButton: Secciones: Final 2 — un click la pone donde está el cabezal; "
             "arrastrala al compás que quieras");
    QCOMPARE(button.text(), "2");
}

// ---- A click or a drag ---------------------------------------------------------------------

void VariationButtonTest::aClickIsAClick()
{
    QTest::mouseClick(button_.get(), Qt::LeftButton);
    QCOMPARE(clicks_->count(), 1);
    QCOMPARE(drags_, 0);
}

void VariationButtonTest::theKeyboardClicks()
{
    button_->setFocus();
    QTest::keyClick(button_.get(), Qt::Key_Space);
    QCOMPARE(clicks_->count(), 1);
}

void VariationButtonTest::aWobbleStaysAClick()
{
    press(button_.get(), kStart);
    for (int distance = 1; distance < QApplication::startDragDistance(); ++distance)
        moveHeld(button_.get(), kStart + QPoint(distance, 0));
    moveHeld(button_.get(), kStart + QPoint(-2, 1));
    QVERIFY(button_->isDown());
    release(button_.get(), kStart + QPoint(-2, 1));
    QCOMPARE(clicks_->count(), 1);
    QCOMPARE(drags_, 0);
}

void VariationButtonTest::aMoveOfTheDragDistanceIsADrag_data()
{
    QTest::addColumn<QPoint>("move");
    QTest::addColumn<int>("drags");
    const int distance = QApplication::startDragDistance();
    QTest::newRow("to the right") << QPoint(distance, 0) << 1;
    QTest::newRow("to the left") << QPoint(-distance, 0) << 1;
    QTest::newRow("up") << QPoint(0, -distance) << 1;
    QTest::newRow("down and far") << QPoint(0, 500) << 1;
    QTest::newRow("both ways are added up") << QPoint(1 - distance, 1) << 1;
    QTest::newRow("a pixel less is none") << QPoint(0, distance - 1) << 0;
    QTest::newRow("a pixel less in both ways is none") << QPoint(distance - 2, -1) << 0;
}

void VariationButtonTest::aMoveOfTheDragDistanceIsADrag()
{
    QFETCH(QPoint, move);
    press(button_.get(), kStart);
    moveHeld(button_.get(), kStart + move);
    QTEST(drags_, "drags");
}

void VariationButtonTest::theDistanceCountsFromTheLastPress()
{
    QTest::mouseClick(button_.get(), Qt::LeftButton, {}, QPoint(2, 2));
    press(button_.get(), QPoint(25, 25));
    moveHeld(button_.get(), QPoint(26, 26));
    QCOMPARE(drags_, 0);
    moveHeld(button_.get(), QPoint(2, 2));
    QCOMPARE(drags_, 1);
}

void VariationButtonTest::aMoveWithoutTheLeftButtonIsNoDrag_data()
{
    QTest::addColumn<int>("buttons");
    QTest::newRow("no button") << int(Qt::NoButton);
    QTest::newRow("the right one") << int(Qt::RightButton);
    QTest::newRow("the middle one") << int(Qt::MiddleButton);
}

void VariationButtonTest::aMoveWithoutTheLeftButtonIsNoDrag()
{
    QFETCH(int, buttons);
    moveHeld(button_.get(), QPoint(0, 300), Qt::MouseButtons(buttons));
    QCOMPARE(drags_, 0);
}

void VariationButtonTest::anotherButtonNeitherClicksNorDrags()
{
    QTest::mousePress(button_.get(), Qt::RightButton, {}, kStart);
    moveHeld(button_.get(), QPoint(90, 90), Qt::RightButton);
    QTest::mouseRelease(button_.get(), Qt::RightButton, {}, kStart);
    QCOMPARE(drags_, 0);
    QCOMPARE(clicks_->count(), 0);
}

// ---- Drags ---------------------------------------------------------------------------------

void VariationButtonTest::aDragCarriesTheLoop_data()
{
    QTest::addColumn<int>("section");
    QTest::addColumn<QByteArray>("json");
    const QByteArray format = R"({"layerId":"c%","rhythmId":"ñ","section":"%1","variantIndex":5})";
    const auto withWord = [&](const char* word) { return QByteArray(format).replace("%1", word); };
    QTest::newRow("Intro, not Introducción") << 0 << withWord("Intro");
    QTest::newRow("Intermedio") << 1 << withWord("Intermedio");
    QTest::newRow("Normal") << 2 << withWord("Normal");
    QTest::newRow("Final") << 3 << withWord("Final");
    QTest::newRow("a section of no name is Normal") << 9 << withWord("Normal");
}

void VariationButtonTest::aDragCarriesTheLoop()
{
    QFETCH(int, section);
    VariationButton button("ñ", "c%", static_cast<LoopSection>(section), 5);
    QStringList formats;
    QByteArray carried;
    button.setDragRunner([&](QDrag& drag) {
        formats = drag.mimeData()->formats();
        carried = drag.mimeData()->data("application/x-velta-loop");
    });
    press(&button, kStart);
    moveHeld(&button, QPoint(90, 90));
    QCOMPARE(formats, QStringList{"application/x-velta-loop"});
    QTEST(carried, "json");
}

void VariationButtonTest::aDragBelongsToTheButton()
{
    QPointer<QDrag> seen;
    button_->setDragRunner([&](QDrag& drag) { seen = &drag; });
    press(button_.get(), kStart);
    moveHeld(button_.get(), QPoint(90, 90));
    QVERIFY(seen);
    QCOMPARE(seen->parent(), button_.get());
    QCOMPARE(seen->source(), button_.get());
    QVERIFY(!seen->pixmap().isNull());
    QCOMPARE(seen->hotSpot(), kStart);
    cleanup();
    QVERIFY(!seen);
}

void VariationButtonTest::theButtonIsUpWhileItIsDragged()
{
    bool down = true;
    bool dragging = false;
    button_->setDragRunner([&](QDrag&) {
        down = button_->isDown();
        dragging = button_->isDragging();
    });
    press(button_.get(), kStart);
    QVERIFY(button_->isDown());
    QVERIFY(!button_->isDragging());
    moveHeld(button_.get(), QPoint(90, 90));
    QVERIFY(!down);
    QVERIFY(dragging);
    QVERIFY(!button_->isDragging());
}

void VariationButtonTest::afterADragThereIsNoClick()
{
    press(button_.get(), kStart);
    moveHeld(button_.get(), QPoint(90, 90));
    release(button_.get(), kStart);
    QCOMPARE(drags_, 1);
    QCOMPARE(clicks_->count(), 0);
}

void VariationButtonTest::movesAfterADragNeitherClickNorDrag()
{
    press(button_.get(), kStart);
    moveHeld(button_.get(), QPoint(90, 90));
    moveHeld(button_.get(), QPoint(200, 90));
    moveHeld(button_.get(), kStart + QPoint(1, 0));
    QVERIFY(!button_->isDown());
    release(button_.get(), kStart + QPoint(1, 0));
    QCOMPARE(drags_, 1);
    QCOMPARE(clicks_->count(), 0);
}

void VariationButtonTest::theNextPressIsANewOne()
{
    press(button_.get(), kStart);
    moveHeld(button_.get(), QPoint(90, 90));
    release(button_.get(), kStart);
    QTest::mouseClick(button_.get(), Qt::LeftButton);
    QCOMPARE(clicks_->count(), 1);
    press(button_.get(), kStart);
    moveHeld(button_.get(), QPoint(90, 90));
    QCOMPARE(drags_, 2);
}

void VariationButtonTest::itTellsWhenADragIsOver()
{
    const QSignalSpy finished(button_.get(), &VariationButton::dragFinished);
    qsizetype finishedMeanwhile = -1;
    button_->setDragRunner([&](QDrag&) { finishedMeanwhile = finished.count(); });
    press(button_.get(), kStart);
    moveHeld(button_.get(), QPoint(90, 90));
    QCOMPARE(finishedMeanwhile, 0);
    QCOMPARE(finished.count(), 1);
}

void VariationButtonTest::aDragThatThePlatformRefusesIsNoClickEither()
{
    VariationButton button("zamba", "bombo", LoopSection::Intro, 3);
    const QSignalSpy clicks(&button, &QToolButton::clicked);
    const QSignalSpy finished(&button, &VariationButton::dragFinished);
    press(&button, kStart);
    moveHeld(&button, QPoint(90, 90));
    QCOMPARE(finished.count(), 1);
    release(&button, kStart);
    QCOMPARE(clicks.count(), 0);
}

VELTA_TEST(VariationButtonTest)

} // namespace VariationButtonTests

#include "VariationButtonTest.moc"
