#include "shell/LoopBrowser.h"

#include "BrowserStage.h"
#include "content/ContentPackage.h"
#include "shell/theme/StyleSheet.h"
#include "support/ContextTranslator.h"
#include "support/TestProgram.h"

#include <QFormLayout>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <utility>

namespace LoopBrowserTests {

namespace {

constexpr TimeSignature kFourFour{};
constexpr TimeSignature kSixEight{.numerator = 6, .denominator = 8, .isCompound = true};
constexpr TimeSignature kSixEightSimple{.numerator = 6, .denominator = 8, .isCompound = false};

const QString kForeign = "Compás distinto al del proyecto — no se puede mezclar";

const QString kNoThreeFour = "No hay ritmos de 3/4 en este estilo.";

bool isEnabled(const QComboBox& combo, int index)
{
    return combo.model()->flags(combo.model()->index(index, 0)).testFlag(Qt::ItemIsEnabled);
}

/// What a choice shows: "text" or "text (disabled)" for each item, the current one with a star.
QStringList itemsOf(const QComboBox& combo)
{
    QStringList items;
    for (int i = 0; i < combo.count(); ++i)
        items.append((i == combo.currentIndex() ? "* " : "") + combo.itemText(i) +
                     (isEnabled(combo, i) ? "" : " (disabled)"));
    return items;
}

/// Chooses the entry below with the keyboard.
void chooseNext(QComboBox& combo)
{
    QTest::keyClick(&combo, Qt::Key_Down);
}

/// Counts the cards that come to the panel.
class CardCounter : public QObject {
public:
    explicit CardCounter(BrowserStage& stage) { stage.area().widget()->installEventFilter(this); }

    int take() { return std::exchange(cards_, 0); }

private:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::ChildAdded)
            ++cards_;
        return false;
    }

    int cards_ = 0;
};

QMargins marginsOf(const QWidget* widget)
{
    return widget->layout()->contentsMargins();
}

int spacingOf(const QWidget* widget)
{
    return widget->layout()->spacing();
}

/// Lets what was given to deleteLater() go, as the event loop of a drag does.
void deleteWhatIsDue()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class LoopBrowserTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // What it shows
    void thePanelStandsFromTopToBottom();
    void theChoicesHaveLabelsAndTooltips();
    void theCardsScrollUpAndDownOnly();
    void stylesStandInTheOrderOfTheLibrary();
    void rhythmsShowTheirMeter();
    void namesAreTakenAsTheyAre();
    void layersShowTheirInstrument_data();
    void layersShowTheirInstrument();
    void withoutInstrumentsLayersShowTheirLabel();
    void cardsStandInTheOrderOfASong();
    void aSectionWithoutVariantsHasNoCardAndTakesNoShade();
    void aCardIsLaidOut();
    void aVariantStandsOverItsPreview();
    void variantsStandByTheirNumber();
    void theStretchStaysLast();
    void wordsAreTranslatedInItsOwnContext();
    void anEmptyLibraryGivesEmptyChoices();

    // Looks
    void buttonsHaveTheirHeightInBothThemes_data();
    void buttonsHaveTheirHeightInBothThemes();
    void longNamesDoNotWidenThePanel();
    void anyNumberOfVariantsFitsTheWidth();
    void asManyVariantsAsAPackageMayHoldAreNoBurden();

    // The cascade
    void aChangeOfStyleFillsTheRest();
    void aChangeOfRhythmFillsTheRest();
    void aChangeOfLayerChangesTheCards();
    void everyChangeRunsTheChainOnce();
    void aWorkShowsItsFirstRhythm();
    void aWorkWithoutAKnownRhythmShowsTheFirst_data();
    void aWorkWithoutAKnownRhythmShowsTheFirst();
    void aReloadGoesBackToTheFirstItems();
    void aReloadOfAnotherLibraryIsShown();
    void dismissedCardsGo();

    // Meters
    void aForeignMeterCannotBeChosen();
    void aRhythmInTheMeterOfTheProjectIsChosenFirst();
    void theWayBackToTheMeterOfTheWorkShowsItsRhythm();
    void anotherCompoundFlagIsAnotherMeter_data();
    void anotherCompoundFlagIsAnotherMeter();
    void whereAllAreForeignNoneIsChosen();
    void damagedLayersAreNotThoseOfNoRhythm();
    void theSentenceGoesWithTheMeter();
    void anotherProjectMarksAnew();
    void aProjectLeavesTheStyleAsItIs();
    void withoutAProjectEveryMeterMayBeChosen();
    void aProjectThatIsGoneIsNone();

private:
    BrowserStage& stage() { return *stage_; }

    std::unique_ptr<BrowserStage> stage_;
    std::unique_ptr<Project> project_;
};

void LoopBrowserTest::init()
{
    stage_ = std::make_unique<BrowserStage>();
    project_ = std::make_unique<Project>();
}

void LoopBrowserTest::cleanup()
{
    stage_.reset();
    project_.reset();
    qApp->setStyleSheet(QString());
}

// ---- What it shows -------------------------------------------------------------------------

void LoopBrowserTest::thePanelStandsFromTopToBottom()
{
    const auto* layout = qobject_cast<QVBoxLayout*>(stage().browser().layout());
    QVERIFY(layout);
    QCOMPARE(layout->count(), 5);
    QCOMPARE(layout->contentsMargins(), QMargins(6, 6, 6, 6));
    QCOMPARE(layout->spacing(), 6);

    const auto* header = qobject_cast<QLabel*>(layout->itemAt(0)->widget());
    QCOMPARE(header->text(), "ACOMPAÑAMIENTO");
    QCOMPARE(header->objectName(), "header_grupo");
    QVERIFY(header->alignment().testFlag(Qt::AlignHCenter));

    const auto* form = qobject_cast<QFormLayout*>(layout->itemAt(1)->layout());
    QCOMPARE(form->contentsMargins(), QMargins());
    QCOMPARE(form->verticalSpacing(), 4);
    QCOMPARE(form->horizontalSpacing(), 4);

    QCOMPARE(layout->itemAt(2)->widget(), &stage().area());
    QCOMPARE(layout->stretch(2), 1);

    const auto* help = qobject_cast<QLabel*>(layout->itemAt(3)->widget());
    QCOMPARE(help->text(), "Click coloca la variación donde está el cabezal.\n"
                           "Arrastrala para elegir el compás exacto.");
    QVERIFY(help->wordWrap());

    const auto* search = qobject_cast<QPushButton*>(layout->itemAt(4)->widget());
    QCOMPARE(search->text(), "Buscar más ritmos…");
    QCOMPARE(search->toolTip(), "Buscar ritmos que no estén instalados, en línea");
}

void LoopBrowserTest::theChoicesHaveLabelsAndTooltips()
{
    const auto* form = qobject_cast<QFormLayout*>(stage().browser().layout()->itemAt(1)->layout());
    QStringList rows;
    for (int row = 0; row < form->rowCount(); ++row) {
        const QWidget* field = form->itemAt(row, QFormLayout::FieldRole)->widget();
        QVERIFY(qobject_cast<const QComboBox*>(field));
        const auto* label =
            qobject_cast<QLabel*>(form->itemAt(row, QFormLayout::LabelRole)->widget());
        QCOMPARE(label->buddy(), field);
        rows.append(label->text() + ": " + field->toolTip());
    }
    QCOMPARE(rows, (QStringList{"Estilo: Estilo musical", "Ritmo: Ritmo dentro del estilo",
                                "Capa: Capa de instrumento del ritmo (cada una tiene su carril "
                                "en la línea de tiempo)"}));
}

void LoopBrowserTest::theCardsScrollUpAndDownOnly()
{
    const QScrollArea& area = stage().area();
    QVERIFY(area.widgetResizable());
    QCOMPARE(area.frameShape(), QFrame::NoFrame);
    QCOMPARE(area.horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(area.verticalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
    QCOMPARE(area.widget()->objectName(), "fila_btns");
    QCOMPARE(marginsOf(area.widget()), QMargins());
    QCOMPARE(spacingOf(area.widget()), 6);
}

void LoopBrowserTest::stylesStandInTheOrderOfTheLibrary()
{
    stage().addThree();
    QCOMPARE(itemsOf(stage().styles()), (QStringList{"* FOLKLORE", "POPULAR"}));
    QCOMPARE(BrowserStage::idsOf(stage().styles()), (QStringList{"folklore", "popular"}));
}

void LoopBrowserTest::rhythmsShowTheirMeter()
{
    stage().addThree();
    QCOMPARE(itemsOf(stage().rhythms()), (QStringList{"* Chacarera (6/8)", "Zamba (4/4)"}));
    QCOMPARE(BrowserStage::idsOf(stage().rhythms()), (QStringList{"a_chacarera", "b_zamba"}));
}

void LoopBrowserTest::namesAreTakenAsTheyAre()
{
    stage().load({.id = "r",
                  .name = "%2 & <b>%1</b> %3",
                  .style = "%1&",
                  .layers = {layerOf("l", "r", "%2 & %1", "contrabajo")},
                  .variants = {variantOf("l", LoopSection::Normal, 1)}});
    QCOMPARE(stage().styles().currentText(), "%1&");
    QCOMPARE(stage().rhythms().currentText(), "%2 & <b>%1</b> %3 (4/4)");
    QCOMPARE(stage().layers().currentText(), "%2 & %1 · Contrabajo");
    const Listener listener(stage().browser());
    stage().browser().setProject(project_.get());
    Widgets::click(stage().variant("NORMAL", 1));
    QCOMPARE(listener.chosen.at(0).displayName, "%2 & <b>%1</b> %3 · %2 & %1");
}

void LoopBrowserTest::layersShowTheirInstrument_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("instrumentId");
    QTest::addColumn<QString>("text");
    QTest::newRow("a label that begins with the instrument stands alone") << "Piano izquierda"
                                                                          << "gm_piano"
                                                                          << "Piano izquierda";
    QTest::newRow("the very name stands alone") << "Piano"
                                                << "gm_piano"
                                                << "Piano";
    QTest::newRow("another label shows both") << "Bajo"
                                              << "contrabajo"
                                              << "Bajo · Contrabajo";
    QTest::newRow("the instrument in the middle is not its beginning") << "El Piano"
                                                                       << "gm_piano"
                                                                       << "El Piano · Piano";
    QTest::newRow("letters count as they are") << "piano"
                                               << "gm_piano"
                                               << "piano · Piano";
    QTest::newRow("an unknown instrument shows nothing") << "Bajo"
                                                         << "nadie"
                                                         << "Bajo";
    QTest::newRow("no instrument shows nothing") << "Bajo"
                                                 << ""
                                                 << "Bajo";
}

void LoopBrowserTest::layersShowTheirInstrument()
{
    QFETCH(QString, label);
    QFETCH(QString, instrumentId);
    stage().load(
        {.id = "r", .name = "R", .style = "s", .layers = {layerOf("l", "r", label, instrumentId)}});
    QTEST(stage().layers().currentText(), "text");
    QCOMPARE(stage().layers().currentData().toString(), "l");
}

void LoopBrowserTest::withoutInstrumentsLayersShowTheirLabel()
{
    stage().addThree();
    const LoopBrowser browser(&stage().library(), nullptr, &stage().catalog, &stage().downloads,
                              &stage().registry, nullptr);
    browser.findChildren<QComboBox*>().at(1)->setCurrentIndex(1);
    QCOMPARE(BrowserStage::textsOf(*browser.findChildren<QComboBox*>().at(2)),
             (QStringList{"Bajo", "Piano izquierda"}));
}

void LoopBrowserTest::cardsStandInTheOrderOfASong()
{
    stage().addThree();
    stage().rhythms().setCurrentIndex(1);
    QCOMPARE(stage().cardLines(),
             (QStringList{"INTRODUCCIÓN 0: 1", "NORMAL 1: 1 2", "INTERMEDIO 2: 1", "FINAL 0: 1"}));
}

void LoopBrowserTest::aSectionWithoutVariantsHasNoCardAndTakesNoShade()
{
    stage().load(
        {.id = "r",
         .name = "R",
         .style = "s",
         .layers = {layerOf("l", "r", "L"), layerOf("m", "r", "M")},
         .variants = {variantOf("l", LoopSection::Normal, 1), variantOf("l", LoopSection::Final, 1),
                      variantOf("m", LoopSection::Intro, 1), variantOf("m", LoopSection::Normal, 1),
                      variantOf("m", LoopSection::Intermedio, 1)}});
    QCOMPARE(stage().cardLines(), (QStringList{"NORMAL 0: 1", "FINAL 1: 1"}));
    chooseNext(stage().layers());
    QCOMPARE(stage().cardLines(),
             (QStringList{"INTRODUCCIÓN 0: 1", "NORMAL 1: 1", "INTERMEDIO 2: 1"}));
}

void LoopBrowserTest::aCardIsLaidOut()
{
    stage().addThree();
    const QFrame* card = stage().cards().at(0);
    QCOMPARE(card->objectName(), "grupo_ribbon");
    QCOMPARE(card->property("alt"), QVariant(QString("0")));
    QVERIFY(qobject_cast<QVBoxLayout*>(card->layout()));
    QCOMPARE(marginsOf(card), QMargins(0, 0, 0, 5));
    QCOMPARE(spacingOf(card), 4);
    QCOMPARE(card->layout()->count(), 2);

    const auto* header = qobject_cast<QLabel*>(card->layout()->itemAt(0)->widget());
    QCOMPARE(header->objectName(), "header_grupo");
    QVERIFY(header->alignment().testFlag(Qt::AlignHCenter));

    const QWidget* row = card->layout()->itemAt(1)->widget();
    QCOMPARE(row->objectName(), "fila_btns");
    QVERIFY(qobject_cast<QHBoxLayout*>(row->layout()));
    QCOMPARE(marginsOf(row), QMargins(6, 0, 6, 0));
    QCOMPARE(spacingOf(row), 6);
    QVERIFY(row->layout()->itemAt(row->layout()->count() - 1)->spacerItem());

    const QWidget* column = row->layout()->itemAt(0)->widget();
    QCOMPARE(column->objectName(), "fila_btns");
    QVERIFY(qobject_cast<QVBoxLayout*>(column->layout()));
    QCOMPARE(marginsOf(column), QMargins());
    QCOMPARE(spacingOf(column), 2);
    QCOMPARE(column->layout()->count(), 2);
    QCOMPARE(column->layout()->itemAt(0)->alignment(), Qt::AlignHCenter);
    QCOMPARE(column->layout()->itemAt(1)->alignment(), Qt::AlignHCenter);
}

void LoopBrowserTest::aVariantStandsOverItsPreview()
{
    stage().addThree();
    const VariationButton* variant = stage().variant("NORMAL", 1);
    QCOMPARE(variant->payload().rhythmId, "a_chacarera");
    QCOMPARE(variant->payload().layerId, "chac_bombo");
    QCOMPARE(variant->payload().section, LoopSection::Normal);
    QCOMPARE(variant->payload().variantIndex, 1);
    const QToolButton* preview = stage().preview("NORMAL", 1);
    QCOMPARE(preview->toolTip(), "Escuchar esta variación");
    QCOMPARE(preview->cursor().shape(), Qt::PointingHandCursor);
    QCOMPARE(preview->height(), 18);
    QVERIFY(preview->y() > variant->y());
    QVERIFY(std::abs(preview->geometry().center().x() - variant->geometry().center().x()) <= 1);
}

void LoopBrowserTest::variantsStandByTheirNumber()
{
    QList<LoopVariant> variants;
    for (const int index : {10, 2, -1, 33, 1})
        variants.append(variantOf("l", LoopSection::Normal, index));
    stage().load(variants);
    QCOMPARE(stage().cardLines(), QStringList{"NORMAL 0: -1 1 2 10 33"});
}

void LoopBrowserTest::theStretchStaysLast()
{
    stage().addThree();
    const QLayout* layout = stage().area().widget()->layout();
    for (int change = 0; change < 3; ++change) {
        stage().rhythms().setCurrentIndex(change % 2);
        QCOMPARE(layout->count(), stage().cards().size() + 1);
        QVERIFY(layout->itemAt(layout->count() - 1)->spacerItem());
    }
}

void LoopBrowserTest::wordsAreTranslatedInItsOwnContext()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    ContextTranslator translator;
    QApplication::installTranslator(&translator);
    stage().destroyBrowser();
    stage().browser().setProject(project_.get());
    QApplication::removeTranslator(&translator);
    QVERIFY(Widgets::withText<QLabel>(stage().browser(), "LoopBrowser: ACOMPAÑAMIENTO"));
    QVERIFY(Widgets::withText<QPushButton>(stage().browser(), "LoopBrowser: Buscar más ritmos…"));
    QCOMPARE(stage().styles().toolTip(), "LoopBrowser: Estilo musical");
    QCOMPARE(stage().rhythms().itemData(0, Qt::ToolTipRole).toString(), "LoopBrowser: " + kForeign);
    QCOMPARE(stage().cardLines().at(0), "SECCIONES: INTRODUCCIÓN 0: 1");
    QCOMPARE(stage().rhythms().itemText(1), "Zamba (4/4)");
}

void LoopBrowserTest::anEmptyLibraryGivesEmptyChoices()
{
    stage().browser().setProject(project_.get());
    stage().library().reload();
    for (const QComboBox* combo : stage().browser().findChildren<QComboBox*>())
        QCOMPARE(combo->count(), 0);
    QVERIFY(stage().cards().isEmpty());
    stage().browser().setProject(nullptr);
    QVERIFY(stage().cards().isEmpty());
}

// ---- Looks ---------------------------------------------------------------------------------

void LoopBrowserTest::buttonsHaveTheirHeightInBothThemes_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void LoopBrowserTest::buttonsHaveTheirHeightInBothThemes()
{
    QFETCH(bool, dark);
    stage().addThree();
    stage().browser();
    qApp->setStyleSheet(styleSheet(dark));
    QApplication::processEvents();
    QCOMPARE(stage().variant("NORMAL", 1)->size(), QSize(30, 30));
    QCOMPARE(stage().preview("NORMAL", 1)->height(), 18);
    QVERIFY(stage().preview("NORMAL", 1)->width() <= 30);
    stage().rhythms().setCurrentIndex(1);
    QApplication::processEvents();
    QCOMPARE(stage().variant("FINAL", 1)->size(), QSize(30, 30));
    QCOMPARE(stage().preview("FINAL", 1)->height(), 18);
}

void LoopBrowserTest::longNamesDoNotWidenThePanel()
{
    qApp->setStyleSheet(styleSheet(false));
    const QString longName = QString("un nombre muy largo ").repeated(20);
    stage().load({.id = "r",
                  .name = longName,
                  .style = longName,
                  .layers = {layerOf("l", "r", longName, "contrabajo")},
                  .variants = {variantOf("l", LoopSection::Normal, 1)}});
    QVERIFY(stage().browser().minimumSizeHint().width() <= 252 - 11);
    for (const QComboBox* combo : stage().browser().findChildren<QComboBox*>()) {
        const int right = combo->mapTo(&stage().browser(), QPoint(combo->width(), 0)).x();
        QCOMPARE(right, 252 - 6);
    }
}

void LoopBrowserTest::anyNumberOfVariantsFitsTheWidth()
{
    qApp->setStyleSheet(styleSheet(false));
    QList<LoopVariant> variants;
    for (int index = 1; index <= 40; ++index)
        variants.append(variantOf("l", LoopSection::Normal, index));
    stage().load(variants);
    for (const int width : {252, 352}) {
        stage().browser().resize(width, 300);
        QApplication::processEvents();
        QCOMPARE(stage().area().widget()->width(), stage().area().viewport()->width());
        const QRect card(QPoint(), stage().cards().at(0)->size());
        QRegion covered;
        for (const QToolButton* button : stage().cards().at(0)->findChildren<QToolButton*>()) {
            const QRect place(button->mapTo(stage().cards().at(0), QPoint()), button->size());
            QVERIFY(card.contains(place));
            QVERIFY(!covered.intersects(place));
            covered += place;
        }
    }
}

void LoopBrowserTest::asManyVariantsAsAPackageMayHoldAreNoBurden()
{
    QList<LoopVariant> variants;
    for (int index = 1; index <= ContentPackage::kMaxVariants; ++index)
        variants.append(variantOf("l", LoopSection::Normal, index));
    stage().load(variants);
    const auto buttons = stage().cards().at(0)->findChildren<VariationButton*>();
    QVERIFY(buttons.size() >= 100 && buttons.size() <= 250);
    QCOMPARE(buttons.first()->text(), "1");
}

// ---- The cascade ---------------------------------------------------------------------------

void LoopBrowserTest::aChangeOfStyleFillsTheRest()
{
    stage().addThree();
    chooseNext(stage().styles());
    QCOMPARE(itemsOf(stage().rhythms()), QStringList{"* Cumbia (4/4)"});
    QCOMPARE(itemsOf(stage().layers()), QStringList{"* Güiro"});
    QCOMPARE(stage().cardLines(), QStringList{"FINAL 0: 1"});
}

void LoopBrowserTest::aChangeOfRhythmFillsTheRest()
{
    stage().addThree();
    QCOMPARE(itemsOf(stage().layers()), QStringList{"* Bombo"});
    chooseNext(stage().rhythms());
    QCOMPARE(itemsOf(stage().styles()), (QStringList{"* FOLKLORE", "POPULAR"}));
    QCOMPARE(itemsOf(stage().layers()), (QStringList{"* Bajo · Contrabajo", "Piano izquierda"}));
    QCOMPARE(stage().cards().size(), 4);
}

void LoopBrowserTest::aChangeOfLayerChangesTheCards()
{
    stage().addThree();
    chooseNext(stage().rhythms());
    chooseNext(stage().layers());
    QCOMPARE(itemsOf(stage().rhythms()), (QStringList{"Chacarera (6/8)", "* Zamba (4/4)"}));
    QCOMPARE(stage().cardLines(), (QStringList{"INTRODUCCIÓN 0: 7", "NORMAL 1: 1"}));
    QCOMPARE(stage().variant("NORMAL", 1)->payload().layerId, "zam_piano");
}

void LoopBrowserTest::everyChangeRunsTheChainOnce()
{
    stage().addThree();
    CardCounter counter(stage());
    chooseNext(stage().rhythms());
    QCOMPARE(counter.take(), 4);
    chooseNext(stage().layers());
    QCOMPARE(counter.take(), 2);
    chooseNext(stage().styles());
    QCOMPARE(counter.take(), 1);
    stage().styles().setCurrentIndex(0);
    QCOMPARE(counter.take(), 1);
    project_->timeSignature = kFourFour;
    stage().browser().setProject(project_.get());
    QCOMPARE(counter.take(), 4);
    stage().library().reload();
    QCOMPARE(counter.take(), 4);
    stage().layers().setCurrentIndex(0);
    QCOMPARE(counter.take(), 0);
}

void LoopBrowserTest::aWorkShowsItsFirstRhythm()
{
    stage().addThree();
    project_->timeSignature = kFourFour;
    project_->tracks = {
        ProjectBuilder::melodyTrack({}),
        ProjectBuilder::loopTrack({ProjectBuilder::loop("b_zamba", "zam_bajo", 8.0, 4.0)}),
        ProjectBuilder::loopTrack({ProjectBuilder::loop("b_zamba", "zam_piano", 16.0, 4.0),
                                   ProjectBuilder::loop("c_cumbia", "cum_guiro", 4.0, 4.0)})};
    CardCounter counter(stage());
    counter.take();
    stage().browser().setProject(project_.get());
    QCOMPARE(stage().styles().currentText(), "POPULAR");
    QCOMPARE(stage().rhythms().currentText(), "Cumbia (4/4)");
    QCOMPARE(stage().layers().currentText(), "Güiro");
    QCOMPARE(counter.take(), 1);
    project_->tracks.removeLast();
    stage().browser().setProject(project_.get());
    QCOMPARE(stage().rhythms().currentText(), "Zamba (4/4)");
    QCOMPARE(stage().cards().size(), 4);
}

void LoopBrowserTest::aWorkWithoutAKnownRhythmShowsTheFirst_data()
{
    QTest::addColumn<QString>("rhythm");
    QTest::newRow("none") << QString();
    QTest::newRow("one that is not installed") << "d_bolero";
    QTest::newRow("one in another meter") << "a_chacarera";
}

void LoopBrowserTest::aWorkWithoutAKnownRhythmShowsTheFirst()
{
    QFETCH(QString, rhythm);
    stage().addThree();
    project_->timeSignature = kFourFour;
    if (!rhythm.isEmpty())
        project_->tracks = {
            ProjectBuilder::loopTrack({ProjectBuilder::loop(rhythm, "l", 0.0, 4.0)})};
    stage().browser().setProject(project_.get());
    QCOMPARE(stage().styles().currentText(), "FOLKLORE");
    QCOMPARE(stage().rhythms().currentText(), "Zamba (4/4)");
}

void LoopBrowserTest::aReloadGoesBackToTheFirstItems()
{
    stage().addThree();
    stage().styles().setCurrentIndex(1);
    stage().library().reload();
    QCOMPARE(itemsOf(stage().styles()), (QStringList{"* FOLKLORE", "POPULAR"}));
    QCOMPARE(itemsOf(stage().rhythms()), (QStringList{"* Chacarera (6/8)", "Zamba (4/4)"}));
    stage().rhythms().setCurrentIndex(1);
    stage().layers().setCurrentIndex(1);
    stage().browser().setProject(project_.get());
    stage().layers().setCurrentIndex(1);
    stage().library().reload();
    QCOMPARE(stage().rhythms().currentText(), "Zamba (4/4)");
    QCOMPARE(stage().layers().currentIndex(), 0);
    QCOMPARE(stage().cards().size(), 4);
}

void LoopBrowserTest::aReloadOfAnotherLibraryIsShown()
{
    stage().addThree();
    stage().rhythms().setCurrentIndex(1);
    QVERIFY(QFile::remove(stage().files.filePath("loops/installed/a_chacarera.content.json")));
    QVERIFY(QFile::remove(stage().files.filePath("loops/installed/b_zamba.content.json")));
    stage().library().reload();
    QCOMPARE(itemsOf(stage().styles()), QStringList{"* POPULAR"});
    QCOMPARE(stage().cardLines(), QStringList{"FINAL 0: 1"});
}

void LoopBrowserTest::dismissedCardsGo()
{
    stage().addThree();
    const QPointer<QFrame> card = stage().cards().at(0);
    stage().rhythms().setCurrentIndex(1);
    QVERIFY(card && !card->isVisible());
    deleteWhatIsDue();
    QVERIFY(!card);
}

// ---- Meters --------------------------------------------------------------------------------

void LoopBrowserTest::aForeignMeterCannotBeChosen()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    QCOMPARE(itemsOf(stage().rhythms()),
             (QStringList{"Chacarera (6/8) (disabled)", "* Zamba (4/4)"}));
    QCOMPARE(stage().rhythms().itemData(0, Qt::ToolTipRole).toString(), kForeign);
    QVERIFY(!stage().rhythms().itemData(1, Qt::ToolTipRole).isValid());
    QTest::keyClick(&stage().rhythms(), Qt::Key_Up);
    QTest::keyClick(&stage().rhythms(), Qt::Key_Home);
    QCOMPARE(stage().rhythms().currentText(), "Zamba (4/4)");
}

void LoopBrowserTest::aRhythmInTheMeterOfTheProjectIsChosenFirst()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    QCOMPARE(itemsOf(stage().layers()), (QStringList{"* Bajo · Contrabajo", "Piano izquierda"}));
    QCOMPARE(stage().cards().size(), 4);
}

void LoopBrowserTest::theWayBackToTheMeterOfTheWorkShowsItsRhythm()
{
    stage().addThree();
    project_->timeSignature = kFourFour;
    project_->tracks = {
        ProjectBuilder::loopTrack({ProjectBuilder::loop("c_cumbia", "cum_guiro", 4.0, 4.0)})};
    stage().browser().setProject(project_.get());
    // No rhythm of this style fits, and the user looks for one.
    project_->timeSignature = kSixEight;
    emit project_->changed();
    stage().styles().setCurrentIndex(0);
    QCOMPARE(stage().rhythms().currentText(), "Chacarera (6/8)");
    project_->timeSignature = kFourFour;
    emit project_->changed();
    QCOMPARE(stage().styles().currentText(), "POPULAR");
    QCOMPARE(stage().rhythms().currentText(), "Cumbia (4/4)");
}

void LoopBrowserTest::anotherCompoundFlagIsAnotherMeter_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<bool>("fits");
    QTest::newRow("6/8 as it is") << kSixEight << true;
    QTest::newRow("6/8 with another compound flag") << kSixEightSimple << false;
    QTest::newRow("another numerator") << TimeSignature{9, 8, true} << false;
    QTest::newRow("another denominator of equal length") << TimeSignature{3, 4, true} << false;
    QTest::newRow("no meter at all") << TimeSignature{0, 0, false} << false;
}

void LoopBrowserTest::anotherCompoundFlagIsAnotherMeter()
{
    QFETCH(TimeSignature, meter);
    QFETCH(bool, fits);
    stage().addThree();
    project_->timeSignature = meter;
    stage().browser().setProject(project_.get());
    QCOMPARE(isEnabled(stage().rhythms(), 0), fits);
    QCOMPARE(stage().rhythms().itemData(0, Qt::ToolTipRole).toString(), fits ? "" : kForeign);
}

void LoopBrowserTest::whereAllAreForeignNoneIsChosen()
{
    stage().addThree();
    project_->timeSignature = {.numerator = 3, .denominator = 4, .isCompound = false};
    stage().browser().setProject(project_.get());
    QCOMPARE(itemsOf(stage().rhythms()),
             (QStringList{"Chacarera (6/8) (disabled)", "Zamba (4/4) (disabled)"}));
    QCOMPARE(stage().rhythms().currentIndex(), -1);
    QCOMPARE(stage().layers().count(), 0);
    QCOMPARE(stage().cardLines(), QStringList());
    QVERIFY(Widgets::withText<QLabel>(stage().browser(), kNoThreeFour));
}

// A package may hold layers of no rhythm.
void LoopBrowserTest::damagedLayersAreNotThoseOfNoRhythm()
{
    const TestRhythm damaged{.id = "damaged",
                             .name = "Damaged",
                             .style = "folklore",
                             .layers = {layerOf("", "", "Bombo")},
                             .variants = {variantOf("", LoopSection::Normal, 1)}};
    stage().load(damaged);
    project_->timeSignature = {.numerator = 3, .denominator = 4, .isCompound = false};
    stage().browser().setProject(project_.get());
    QCOMPARE(stage().layers().count(), 0);
    QVERIFY(Widgets::withText<QLabel>(stage().browser(), kNoThreeFour));
}

void LoopBrowserTest::theSentenceGoesWithTheMeter()
{
    stage().addThree();
    project_->timeSignature = {.numerator = 3, .denominator = 4, .isCompound = false};
    stage().browser().setProject(project_.get());
    Project zamba;
    stage().browser().setProject(&zamba);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!Widgets::withText<QLabel>(stage().browser(), kNoThreeFour));
    QVERIFY(!stage().cardLines().isEmpty());
    // In no work any rhythm may be chosen.
    stage().browser().setProject(nullptr);
    QVERIFY(stage().rhythms().currentIndex() >= 0);
}

void LoopBrowserTest::anotherProjectMarksAnew()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    Project chacarera;
    chacarera.timeSignature = kSixEight;
    stage().browser().setProject(&chacarera);
    QCOMPARE(itemsOf(stage().rhythms()),
             (QStringList{"* Chacarera (6/8)", "Zamba (4/4) (disabled)"}));
    QCOMPARE(stage().cardLines(), QStringList{"NORMAL 0: 1"});
    stage().browser().setProject(nullptr);
}

void LoopBrowserTest::aProjectLeavesTheStyleAsItIs()
{
    stage().addThree();
    stage().styles().setCurrentIndex(1);
    stage().browser().setProject(project_.get());
    QCOMPARE(itemsOf(stage().styles()), (QStringList{"FOLKLORE", "* POPULAR"}));
    QCOMPARE(itemsOf(stage().rhythms()), QStringList{"* Cumbia (4/4)"});
}

void LoopBrowserTest::withoutAProjectEveryMeterMayBeChosen()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    stage().browser().setProject(nullptr);
    QCOMPARE(itemsOf(stage().rhythms()), (QStringList{"* Chacarera (6/8)", "Zamba (4/4)"}));
    QVERIFY(!stage().rhythms().itemData(0, Qt::ToolTipRole).isValid());
}

void LoopBrowserTest::aProjectThatIsGoneIsNone()
{
    stage().addThree();
    stage().browser().setProject(project_.get());
    const Listener listener(stage().browser());
    project_.reset();
    Widgets::click(stage().variant("NORMAL", 1));
    stage().library().reload();
    QVERIFY(listener.chosen.isEmpty());
    QVERIFY(isEnabled(stage().rhythms(), 0));
}

VELTA_TEST(LoopBrowserTest)

} // namespace LoopBrowserTests

#include "LoopBrowserTest.moc"
