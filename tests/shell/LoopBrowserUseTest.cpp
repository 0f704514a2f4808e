#include "BrowserStage.h"
#include "shell/IgualadorSimbolos.h"
#include "shell/LoopBrowser.h"
#include "support/FluidSpy.h"
#include "support/TestProgram.h"

#include <QDialog>
#include <QDrag>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <limits>
#include <memory>

namespace LoopBrowserUseTests {

namespace {

constexpr TimeSignature kSixEight{.numerator = 6, .denominator = 8, .isCompound = true};

/// Chooses the entry below with the keyboard.
void chooseNext(QComboBox& combo)
{
    QTest::keyClick(&combo, Qt::Key_Down);
}

void startDrag(QWidget* widget)
{
    QTest::mousePress(widget, Qt::LeftButton, {}, QPoint(9, 9));
    const QPoint place(9 + QApplication::startDragDistance(), 9);
    QMouseEvent event(QEvent::MouseMove, place, widget->mapToGlobal(place), Qt::NoButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

/// Lets what was given to deleteLater() go, as the event loop of a drag does.
void deleteWhatIsDue()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// A tempo at which a beat takes a millisecond.
constexpr int kAtOnce = 60000;

/// A note that at any common tempo is minutes away.
const QList<NoteEvent> kFarNote{ProjectBuilder::note(61, 300.0, 1.0, 99)};

/// A rhythm with one variant, whose note is heard soon at the tempo kAtOnce alone.
TestRhythm farRhythm(int referenceBpm)
{
    return {.id = "r",
            .name = "R",
            .style = "s",
            .meter = {},
            .layers = {layerOf("l", "r", "Bajo", "contrabajo")},
            .variants = {variantOf("l", LoopSection::Normal, 1, 1, kFarNote)},
            .referenceBpm = referenceBpm};
}

bool isHeard()
{
    return QTest::qWaitFor([] { return FluidSpy::calls().contains("noteon 13 61 99"); }, 20000);
}

} // namespace

class LoopBrowserUseTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Placing
    void aClickPlacesTheVariant();
    void theLengthIsThatOfTheRhythm_data();
    void theLengthIsThatOfTheRhythm();
    void theSpaceBarPlacesTheVariant();
    void withoutAProjectAClickPlacesNothing();
    void aWobblePlacesOnce();
    void aDragPlacesNothing();
    void aListenerMayReadTheLibraryAnew();
    void aReloadDuringADragLeavesTheButton();
    void theFirstOfTwoEqualIdsIsPlaced();

    // Hearing
    void thePreviewSoundsOnTheInstrumentOfTheLayer();
    void thePreviewGoesAtTheTempoOfTheProject();
    void withoutAProjectThePreviewGoesAtTheTempoOfTheRhythm();
    void thePreviewPlacesNothing();
    void thePreviewSoundsOnWhenTheLibraryReloads();
    void withoutAnEngineNothingIsHeard();

    // Looking
    void theFacesOfLaterCardsAreEvenedOutToo();

    // The search
    void theSearchOpensADialogForAsLongAsItRuns();

    // Damage
    void oddLibrariesAreHarmless_data();
    void oddLibrariesAreHarmless();

private:
    BrowserStage& stage() { return *stage_; }

    std::unique_ptr<BrowserStage> stage_;
    std::unique_ptr<Project> project_;
};

void LoopBrowserUseTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<BrowserStage>();
    project_ = std::make_unique<Project>();
}

void LoopBrowserUseTest::cleanup()
{
    stage_.reset();
    project_.reset();
}

// ---- Placing -------------------------------------------------------------------------------

void LoopBrowserUseTest::aClickPlacesTheVariant()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    const Listener listener(stage().browser());
    Widgets::click(stage().variant("NORMAL", 2));
    QCOMPARE(listener.chosen.size(), 1);
    const Chosen& chosen = listener.chosen.at(0);
    QCOMPARE(chosen.block, (LoopBlock{.startBeat = -1.0,
                                      .durationBeats = 4.0,
                                      .rhythmId = "b_zamba",
                                      .layerId = "zam_bajo",
                                      .section = LoopSection::Normal,
                                      .variantIndex = 2}));
    QCOMPARE(chosen.instrumentId, "contrabajo");
    QCOMPARE(chosen.displayName, "Zamba · Bajo");
    QVERIFY(project_->tracks.isEmpty());

    Widgets::click(stage().variant("INTERMEDIO", 1));
    QCOMPARE(listener.chosen.at(1).block.section, LoopSection::Intermedio);
    Widgets::click(stage().variant("INTRODUCCIÓN", 1));
    QCOMPARE(listener.chosen.at(2).block.section, LoopSection::Intro);
    Widgets::click(stage().variant("FINAL", 1));
    QCOMPARE(listener.chosen.at(3).block.section, LoopSection::Final);
}

void LoopBrowserUseTest::theLengthIsThatOfTheRhythm_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("bars");
    QTest::addColumn<double>("beats");
    QTest::newRow("a bar of 4/4") << TimeSignature{4, 4, false} << 1 << 4.0;
    QTest::newRow("four bars of 4/4") << TimeSignature{4, 4, false} << 4 << 16.0;
    QTest::newRow("two bars of 6/8") << kSixEight << 2 << 6.0;
    QTest::newRow("two bars of 2/4") << TimeSignature{2, 4, false} << 2 << 4.0;
    QTest::newRow("three bars of 7/8") << TimeSignature{7, 8, false} << 3 << 10.5;
    QTest::newRow("no bars") << TimeSignature{4, 4, false} << 0 << 0.0;
}

void LoopBrowserUseTest::theLengthIsThatOfTheRhythm()
{
    QFETCH(TimeSignature, meter);
    QFETCH(int, bars);
    stage().load({.id = "r",
                  .name = "R",
                  .style = "s",
                  .meter = meter,
                  .layers = {layerOf("l", "r", "L")},
                  .variants = {variantOf("l", LoopSection::Normal, 1, bars)}});
    project_->timeSignature = meter;
    stage().browser().setProject(project_.get());
    const Listener listener(stage().browser());
    Widgets::click(stage().variant("NORMAL", 1));
    QTEST(listener.chosen.at(0).block.durationBeats, "beats");
}

void LoopBrowserUseTest::theSpaceBarPlacesTheVariant()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    const Listener listener(stage().browser());
    stage().variant("NORMAL", 1)->setFocus();
    QTest::keyClick(stage().variant("NORMAL", 1), Qt::Key_Space);
    QCOMPARE(listener.chosen.size(), 1);
    QCOMPARE(listener.chosen.at(0).block.durationBeats, 16.0);
}

void LoopBrowserUseTest::withoutAProjectAClickPlacesNothing()
{
    stage().addThree();
    const Listener listener(stage().browser());
    Widgets::click(stage().variant("NORMAL", 1));
    QVERIFY(listener.chosen.isEmpty());
}

void LoopBrowserUseTest::aWobblePlacesOnce()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    const Listener listener(stage().browser());
    VariationButton* button = stage().variant("NORMAL", 1);
    QTest::mousePress(button, Qt::LeftButton, {}, QPoint(9, 9));
    QMouseEvent wobble(QEvent::MouseMove, QPoint(11, 8), button->mapToGlobal(QPoint(11, 8)),
                       Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(button, &wobble);
    QTest::mouseRelease(button, Qt::LeftButton, {}, QPoint(11, 8));
    QCOMPARE(listener.chosen.size(), 1);
}

void LoopBrowserUseTest::aDragPlacesNothing()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    const Listener listener(stage().browser());
    QByteArray carried;
    VariationButton* button = stage().variant("INTRODUCCIÓN", 1);
    button->setDragRunner(
        [&](QDrag& drag) { carried = drag.mimeData()->data("application/x-velta-loop"); });
    startDrag(button);
    QTest::mouseRelease(button, Qt::LeftButton, {}, QPoint(9, 9));
    QCOMPARE(carried, R"({"layerId":"zam_bajo","rhythmId":"b_zamba","section":"Intro",)"
                      R"("variantIndex":1})");
    QVERIFY(listener.chosen.isEmpty());
}

void LoopBrowserUseTest::aListenerMayReadTheLibraryAnew()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    connect(&stage().browser(), &LoopBrowser::loopChosen, this, [this] {
        QVERIFY(QFile::remove(stage().files.filePath("loops/installed/b_zamba.content.json")));
        stage().library().reload();
    });
    const Listener listener(stage().browser());
    Widgets::click(stage().variant("NORMAL", 1));
    QCOMPARE(listener.chosen.size(), 1);
    QCOMPARE(listener.chosen.at(0).instrumentId, "contrabajo");
    QCOMPARE(listener.chosen.at(0).displayName, "Zamba · Bajo");
    QCOMPARE(listener.chosen.at(0).block.layerId, "zam_bajo");
}

void LoopBrowserUseTest::aReloadDuringADragLeavesTheButton()
{
    stage().addThree();
    const QPointer<VariationButton> button = stage().variant("NORMAL", 1);
    bool alive = false;
    qsizetype cards = 0;
    button->setDragRunner([&](QDrag&) {
        stage().library().reload();
        deleteWhatIsDue();
        alive = !button.isNull();
        cards = stage().cards().size();
    });
    startDrag(button);
    QVERIFY(alive);
    QCOMPARE(cards, 1);
    QVERIFY(stage().variant("NORMAL", 1) != button);
    deleteWhatIsDue();
    QVERIFY(!button);
}

void LoopBrowserUseTest::theFirstOfTwoEqualIdsIsPlaced()
{
    const QList<LoopLayer> layers{layerOf("l", "r", "L")};
    stage().add({.id = "r",
                 .name = "Primero",
                 .style = "s",
                 .layers = layers,
                 .variants = {variantOf("l", LoopSection::Normal, 1, 3)}});
    stage().files.addPackage("s", TestRhythm{.id = "r",
                                             .name = "Segundo",
                                             .style = "s",
                                             .layers = layers,
                                             .variants = {variantOf("l", LoopSection::Normal, 1)}}
                                      .package());
    stage().library().reload();
    stage().browser().setProject(project_.get());
    QCOMPARE(BrowserStage::textsOf(stage().rhythms()),
             (QStringList{"Primero (4/4)", "Segundo (4/4)"}));
    QCOMPARE(stage().layers().count(), 2);
    QCOMPARE(stage().cardLines(), QStringList{"NORMAL 0: 1 1"});
    const Listener listener(stage().browser());
    chooseNext(stage().rhythms());
    Widgets::click(stage().cards().at(0)->findChildren<VariationButton*>().at(1));
    QCOMPARE(listener.chosen.at(0).displayName, "Primero · L");
    QCOMPARE(listener.chosen.at(0).block.durationBeats, 12.0);
}

// ---- Hearing -------------------------------------------------------------------------------

void LoopBrowserUseTest::thePreviewSoundsOnTheInstrumentOfTheLayer()
{
    stage().addEngine();
    stage().add(farRhythm(kAtOnce));
    stage().library().reload();
    stage().browser();
    FluidSpy::reset();
    Widgets::click(stage().preview("NORMAL", 1));
    const QStringList programs = FluidSpy::calls({"program_select"});
    QCOMPARE(programs.size(), 1);
    QVERIFY2(programs.at(0).startsWith("program_select 13 ") && programs.at(0).endsWith(" 0 32"),
             qPrintable(programs.at(0)));
}

void LoopBrowserUseTest::thePreviewGoesAtTheTempoOfTheProject()
{
    stage().addEngine();
    stage().add(farRhythm(1));
    stage().library().reload();
    project_->bpm = kAtOnce;
    stage().browser().setProject(project_.get());
    Widgets::click(stage().preview("NORMAL", 1));
    QVERIFY(isHeard());
}

void LoopBrowserUseTest::withoutAProjectThePreviewGoesAtTheTempoOfTheRhythm()
{
    stage().addEngine();
    stage().add(farRhythm(kAtOnce));
    stage().library().reload();
    const Listener listener(stage().browser());
    Widgets::click(stage().variant("NORMAL", 1));
    QVERIFY(listener.chosen.isEmpty());
    Widgets::click(stage().preview("NORMAL", 1));
    QVERIFY(isHeard());
}

void LoopBrowserUseTest::thePreviewPlacesNothing()
{
    stage().addEngine();
    stage().addThree();
    stage().browser().setProject(project_.get());
    const Listener listener(stage().browser());
    Widgets::click(stage().preview("NORMAL", 1));
    QVERIFY(listener.chosen.isEmpty());
}

void LoopBrowserUseTest::thePreviewSoundsOnWhenTheLibraryReloads()
{
    stage().addEngine();
    stage().add(farRhythm(kAtOnce));
    stage().library().reload();
    Widgets::click(stage().preview("NORMAL", 1));
    QVERIFY(QFile::remove(stage().files.filePath("loops/installed/r.content.json")));
    stage().library().reload();
    QVERIFY(stage().cards().isEmpty());
    QVERIFY(isHeard());
}

void LoopBrowserUseTest::withoutAnEngineNothingIsHeard()
{
    stage().addThree();
    Widgets::click(stage().preview("NORMAL", 1));
    QCOMPARE(FluidSpy::calls(), QStringList());
}

// ---- Looking -------------------------------------------------------------------------------

void LoopBrowserUseTest::theFacesOfLaterCardsAreEvenedOutToo()
{
    const auto faceOf = [this] {
        VariationButton* button = stage().variant("NORMAL", 2);
        button->ensurePolished();
        return button->font().pixelSize();
    };
    stage().addThree();
    stage().browser().setProject(project_.get());
    // As a window does when it is shown.
    ovelin::igualarSimbolos(&stage().browser());
    const int size = faceOf();
    QVERIFY(size > 0);
    stage().library().reload();
    QCOMPARE(faceOf(), size);
}

// ---- The search ----------------------------------------------------------------------------

void LoopBrowserUseTest::theSearchOpensADialogForAsLongAsItRuns()
{
    QString title;
    bool modal = false;
    QTimer::singleShot(0, &stage().browser(), [&] {
        auto* dialog = stage().browser().findChild<QDialog*>();
        title = dialog->windowTitle();
        modal = dialog->isModal() && dialog->isVisible();
        dialog->reject();
    });
    Widgets::click(Widgets::withText<QPushButton>(stage().browser(), "Buscar más ritmos…"));
    QCOMPARE(title, "Buscar más ritmos en línea");
    QVERIFY(modal);
    QVERIFY(!stage().browser().findChild<QDialog*>());
}

// ---- Damage --------------------------------------------------------------------------------

void LoopBrowserUseTest::oddLibrariesAreHarmless_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::addColumn<int>("bars");
    QTest::addColumn<int>("variantIndex");
    QTest::addColumn<int>("referenceBpm");
    constexpr int kMin = std::numeric_limits<int>::min();
    constexpr int kMax = std::numeric_limits<int>::max();
    QTest::newRow("numerator 0") << 0 << 4 << 1 << 1 << 120;
    QTest::newRow("denominator 0") << 4 << 0 << 1 << 1 << 120;
    QTest::newRow("0/0") << 0 << 0 << 1 << 1 << 120;
    QTest::newRow("negative meter") << -4 << -8 << -3 << -1 << -120;
    QTest::newRow("as large as can be") << kMax << 1 << kMax << kMax << kMax;
    QTest::newRow("as small as can be") << kMin << kMin << kMin << kMin << kMin;
    QTest::newRow("tempo 0") << 4 << 4 << 1 << 0 << 0;
}

void LoopBrowserUseTest::oddLibrariesAreHarmless()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    QFETCH(int, bars);
    QFETCH(int, variantIndex);
    QFETCH(int, referenceBpm);
    stage().addEngine();
    const QList<NoteEvent> notes{ProjectBuilder::note(-5, -1e300),
                                 ProjectBuilder::note(400, 1e300)};
    stage().load({.id = "r",
                  .name = "R",
                  .style = "s",
                  .meter = {numerator, denominator, false},
                  .layers = {layerOf("l", "r", ""), layerOf("l", "r", ""), layerOf("", "r", "")},
                  .variants = {variantOf("l", LoopSection::Normal, variantIndex, bars, notes),
                               variantOf("l", LoopSection::Normal, variantIndex, bars)},
                  .referenceBpm = referenceBpm});
    QCOMPARE(stage().rhythms().itemText(0), QString("R (%1/%2)").arg(numerator).arg(denominator));
    Widgets::click(stage().preview("NORMAL", variantIndex));
    project_->timeSignature = {numerator, denominator, false};
    stage().browser().setProject(project_.get());
    const Listener listener(stage().browser());
    Widgets::click(stage().variant("NORMAL", variantIndex));
    Widgets::click(stage().preview("NORMAL", variantIndex));
    QCOMPARE(listener.chosen.size(), 1);
    QCOMPARE(listener.chosen.at(0).block.variantIndex, variantIndex);
    stage().layers().setCurrentIndex(2);
    QVERIFY(stage().cards().isEmpty());
}

VELTA_TEST(LoopBrowserUseTest)

} // namespace LoopBrowserUseTests

#include "LoopBrowserUseTest.moc"
