#include "shell/TransportControls.h"

#include "model/Project.h"
#include "shell/RibbonGroup.h"
#include "shell/theme/ThemeManager.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "support/Widgets.h"

#include <QAccessible>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <limits>

namespace TransportControlsTests {

using namespace ProjectBuilder;

namespace {

/// Writes down every signal of a ribbon with its values.
class Said {
public:
    explicit Said(TransportControls& ribbon)
    {
        using Ribbon = TransportControls;
        const auto note = [&](void (Ribbon::*asked)(), const QString& text) {
            QObject::connect(&ribbon, asked, [this, text] { texts_.append(text); });
        };
        note(&Ribbon::saveRequested, "save");
        note(&Ribbon::newProjectRequested, "new");
        note(&Ribbon::openProjectRequested, "open");
        note(&Ribbon::addTrackRequested, "add track");
        note(&Ribbon::removeTrackRequested, "remove track");
        note(&Ribbon::recordVoiceRequested, "record voice");
        note(&Ribbon::importVoiceRequested, "import voice");
        note(&Ribbon::exportMp3Requested, "export MP3");
        note(&Ribbon::exportWavRequested, "export WAV");
        note(&Ribbon::exportMidiRequested, "export MIDI");
        note(&Ribbon::zoomInRequested, "zoom in");
        note(&Ribbon::zoomOutRequested, "zoom out");
        noteValues(ribbon);
    }

    QStringList take() { return std::exchange(texts_, {}); }

private:
    void noteValues(TransportControls& ribbon)
    {
        using Ribbon = TransportControls;
        QObject::connect(&ribbon, &Ribbon::bpmEdited,
                         [this](int bpm) { texts_.append(QString("bpm %1").arg(bpm)); });
        QObject::connect(&ribbon, &Ribbon::meterEdited, [this](const TimeSignature& meter) {
            texts_.append(QString("meter %1/%2").arg(meter.numerator).arg(meter.denominator));
        });
        QObject::connect(&ribbon, &Ribbon::harmonyMuteToggled,
                         [this](bool muted) { texts_.append(muted ? "muted" : "heard"); });
        QObject::connect(&ribbon, &Ribbon::keySignatureEdited, [this](int root, int mode) {
            texts_.append(QString("key %1 %2").arg(root).arg(mode));
        });
        QObject::connect(&ribbon, &Ribbon::subdivisionChanged, [this](GridSubdivisionLevel level) {
            texts_.append(QString("grid %1").arg(static_cast<int>(level)));
        });
    }

    QStringList texts_;
};

struct Group {
    QString title;
    int row;
    QString alt;
    QStringList captions;
};

/// The ribbon from left to right.
const QList<Group>& groupTable()
{
    static const QList<Group> table{
        {"PROYECTO", 0, "0", {"Nueva", "Guardar", "Abrir"}},
        {"REPRODUCCIÓN",
         0,
         "1",
         {"Reproducir", "Detener", "Repetir", "Del compás", "al compás", "Metrónomo", "Posición"}},
        {"TEMPO Y TONALIDAD", 0, "2", {"Velocidad", "Compás", "Tonalidad", "Modo", "Acordes"}},
        {"VELTAS", 1, "0", {"Agregar", "Quitar"}},
        {"VOZ", 1, "1", {"Grabar", "Importar"}},
        {"EXPORTAR", 1, "2", {"Audio", "Audio HQ", "Partitura"}},
        {"VISTA", 1, "0", {"Acercar", "Alejar", "Seguir", "Grilla"}}};
    return table;
}

QList<RibbonGroup*> groupsOfRow(const QWidget& ribbon, int row)
{
    return ribbon.layout()->itemAt(row)->widget()->findChildren<RibbonGroup*>(
        QString(), Qt::FindDirectChildrenOnly);
}

QPoint placeOf(const QWidget* widget)
{
    return widget->mapTo(widget->window(), widget->rect().center());
}

/// The captions of a group as they stand on the screen.
QStringList captionsOf(const RibbonGroup& group)
{
    QList<QLabel*> labels = group.findChildren<QLabel*>("lbl_toolbar");
    labels.removeIf(
        [](const QLabel* label) { return label->text() == "1.1" || !label->isVisible(); });
    std::ranges::sort(labels, {}, [](const QLabel* label) { return placeOf(label).x(); });
    QStringList captions;
    for (const QLabel* label : labels)
        captions.append(label->text());
    return captions;
}

QComboBox* combo(const QWidget& ribbon, const QString& caption)
{
    return Widgets::over<QComboBox>(ribbon, caption);
}

QSpinBox* spin(const QWidget& ribbon, const QString& caption)
{
    return Widgets::over<QSpinBox>(ribbon, caption);
}

QToolButton* button(const QWidget& ribbon, const QString& caption)
{
    return Widgets::over<QToolButton>(ribbon, caption);
}

QStringList entriesOf(const QComboBox* box)
{
    QStringList entries;
    for (int i = 0; i < box->count(); ++i)
        entries.append(box->itemText(i));
    return entries;
}

QStringList simpleWords()
{
    return {"Pulso (el pie)", "División binaria (de a 2)", "Subdivisión (de a 4)"};
}

QStringList compoundWords()
{
    return {"Pulso (el pie)", "División ternaria (de a 3)", "Subdivisión (de a 6)"};
}

constexpr TimeSignature kSixEight{.numerator = 6, .denominator = 8, .isCompound = true};

/// A project that differs from a new one in everything that the ribbon shows.
std::unique_ptr<Project> otherProject()
{
    auto song =
        project({}, {}, kSixEight, KeySignature{.rootPitchClass = 9, .mode = KeyMode::Minor}, 84);
    song->harmonyTrack.muted = true;
    return song;
}

/// What a screen reader calls a control: its name and what labels it. Where the name of a box is
/// the entry that it shows, the label tells them apart.
QStringList namesOf(const QAccessibleInterface* accessible)
{
    QStringList names{accessible->text(QAccessible::Name)};
    for (const auto& [other, relation] : accessible->relations(QAccessible::Label))
        names.append(other->text(QAccessible::Name));
    return names;
}

/// Rows that are named as what stands under their control.
void addCaptions(const QStringList& captions)
{
    QTest::addColumn<QString>("caption");
    for (const QString& caption : captions)
        QTest::newRow(qPrintable(caption)) << caption;
}

/// Types a number in place of what a box holds.
void type(QSpinBox* box, const QString& digits)
{
    box->selectAll();
    QTest::keyClicks(box, digits);
}

} // namespace

class TransportControlsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // What stands where
    void theRibbonIsTwoRowsOfGroups();
    void theGroupsStandInOrder_data();
    void theGroupsStandInOrder();
    void rowsEndInAStretch();
    void buttonsAreTheRowsOfTheTable_data();
    void buttonsAreTheRowsOfTheTable();
    void spinBoxesAreTheRowsOfTheTable_data();
    void spinBoxesAreTheRowsOfTheTable();
    void comboBoxesAreTheRowsOfTheTable_data();
    void comboBoxesAreTheRowsOfTheTable();
    void thePositionIsTheRowOfTheTable();
    void thePositionIsLargeInEveryTheme_data();
    void thePositionIsLargeInEveryTheme();
    void theExportButtonsHaveFacesForWords_data();
    void theExportButtonsHaveFacesForWords();
    void otherButtonsHaveNoSheetOfTheirOwn();
    void theRibbonPaintsItsOwnBackground();

    // For those who do not see it
    void everyControlHasAName_data();
    void everyControlHasAName();
    void everyCaptionOfAControlIsItsBuddy_data();
    void everyCaptionOfAControlIsItsBuddy();
    void theTabKeyGoesFromLeftToRight();

    // Requests
    void aClickAsksForOneThing_data();
    void aClickAsksForOneThing();
    void playbackButtonsAskForNothing_data();
    void playbackButtonsAskForNothing();

    // Edits
    void aTypedTempoIsAnEdit();
    void aTempoStaysInItsRange_data();
    void aTempoStaysInItsRange();
    void anArrowKeyIsAnEditOfTheTempo();
    void everyKeyIsAnEdit_data();
    void everyKeyIsAnEdit();
    void allKeysAreSeenAtOnce();
    void aModeIsAnEdit();
    void aSilencedGuideIsAnEdit();
    void everyGridLevelIsAChange();
    void chosenAgainNothingIsEdited();
    void editsDoNotTouchTheProject();

    // Projects
    void aProjectIsShown();
    void loadingAnnouncesNothing();
    void changesAnnounceNothing();
    void changesAreFollowed();
    void theMeterOfTheWorkIsShownAndAskedFor();
    void theGuardEndsWithTheUpdate();
    void aModeOfTwoNames_data();
    void aModeOfTwoNames();
    void theGridSpeaksTheMeter();
    void theGridGrowsWithTheWordsOfTheMeter();
    void theGridKeepsItsLevel();
    void withoutAProjectTheGridSpeaksSimply();
    void theFormerProjectIsNotFollowed();
    void theSameProjectTwiceIsFollowedOnce();
    void aProjectThatIsGoneIsForgotten();
    void hostileProjectsAreShown_data();
    void hostileProjectsAreShown();
    void generatedProjectsAnnounceNothing();

    // Without an engine
    void withoutAnEngineTheTransportDoesNothing();
    void withoutAProjectNothingBreaks();

private:
    std::unique_ptr<UserHome> home_;
    std::unique_ptr<TransportControls> ribbon_;
};

void TransportControlsTest::init()
{
    home_ = std::make_unique<UserHome>();
    ribbon_ = std::make_unique<TransportControls>(nullptr);
}

void TransportControlsTest::cleanup()
{
    ribbon_.reset();
    qApp->setStyleSheet(QString());
    home_.reset();
}

// ---- What stands where ---------------------------------------------------------------------

void TransportControlsTest::theRibbonIsTwoRowsOfGroups()
{
    QCOMPARE(ribbon_->objectName(), "ribbon");
    const auto* layout = qobject_cast<QVBoxLayout*>(ribbon_->layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins(3, 3, 3, 3));
    QCOMPARE(layout->spacing(), 3);
    QCOMPARE(layout->count(), 2);
    for (int row = 0; row < 2; ++row) {
        const QWidget* widget = layout->itemAt(row)->widget();
        QCOMPARE(widget->objectName(), "fila_btns");
        QVERIFY(qobject_cast<QHBoxLayout*>(widget->layout()));
        QCOMPARE(widget->layout()->contentsMargins(), QMargins(0, 0, 0, 0));
        QCOMPARE(widget->layout()->spacing(), 3);
    }
}

void TransportControlsTest::theGroupsStandInOrder_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("place");
    QTest::addColumn<int>("entry");
    int place = 0;
    for (int i = 0; i < groupTable().size(); ++i) {
        const Group& group = groupTable().at(i);
        place = i > 0 && groupTable().at(i - 1).row == group.row ? place + 1 : 0;
        QTest::newRow(qPrintable(group.title)) << group.row << place << i;
    }
}

void TransportControlsTest::theGroupsStandInOrder()
{
    QFETCH(int, row);
    QFETCH(int, place);
    QFETCH(int, entry);
    const Group& expected = groupTable().at(entry);
    ribbon_->show();
    QList<RibbonGroup*> groups = groupsOfRow(*ribbon_, row);
    std::ranges::sort(groups, {}, [](const QWidget* group) { return placeOf(group).x(); });
    const RibbonGroup* group = groups.value(place);
    QVERIFY(group);
    QCOMPARE(group->findChild<QLabel*>("header_grupo")->text(), expected.title);
    QCOMPARE(group->property("alt").toString(), expected.alt);
    QCOMPARE(captionsOf(*group), expected.captions);
}

void TransportControlsTest::rowsEndInAStretch()
{
    QCOMPARE(groupsOfRow(*ribbon_, 0).size(), 3);
    QCOMPARE(groupsOfRow(*ribbon_, 1).size(), 4);
    ribbon_->resize(2500, 300);
    ribbon_->show();
    for (int row = 0; row < 2; ++row) {
        const QLayout* layout = ribbon_->layout()->itemAt(row)->widget()->layout();
        QVERIFY(layout->itemAt(layout->count() - 1)->spacerItem());
        for (const RibbonGroup* group : groupsOfRow(*ribbon_, row)) {
            QVERIFY(placeOf(group).x() < 1800);
            QCOMPARE(group->width(), group->sizeHint().width());
        }
    }
}

void TransportControlsTest::buttonsAreTheRowsOfTheTable_data()
{
    QTest::addColumn<QString>("face");
    QTest::addColumn<QString>("tooltip");
    QTest::addColumn<bool>("checkable");
    QTest::addColumn<bool>("checked");
    const auto row = [](const char* caption, const char* face, const char* tooltip,
                        bool checkable = false, bool checked = false) {
        QTest::newRow(caption) << QString(face) << QString(tooltip) << checkable << checked;
    };
    row("Nueva", "✚", "Empezar una obra nueva (Ctrl+N)");
    row("Guardar", "💾", "Guardar la obra para seguirla después (Ctrl+S)");
    row("Abrir", "📂", "Abrir una obra guardada (Ctrl+O)");
    row("Reproducir", "▶", "Escuchar la canción desde el cabezal (Espacio)");
    row("Detener", "■", "Parar y volver al comienzo");
    row("Repetir", "⟳", "Repetir un rango de compases en loop", true);
    row("Metrónomo", "♩", "Marcar el pulso mientras suena la canción", true);
    row("Acordes", "♫", "Hacer sonar (o silenciar) la guía de acordes", true, true);
    row("Agregar", "＋", "Agregar una velta nueva para otro instrumento");
    row("Quitar", "−", "Quitar la velta seleccionada");
    row("Grabar", "●", "Grabar tu voz con el micrófono mientras suena la canción");
    row("Importar", "⇩", "Traer un audio ya grabado (WAV, MP3, ogg, opus)");
    row("Audio", "MP3", "Guardar la canción como MP3 para compartir o usar en Ecos y Cuadros");
    row("Audio HQ", "WAV", "Guardar la canción como WAV sin comprimir");
    row("Partitura", "MIDI", "Guardar las notas como MIDI para abrir en otros programas");
    row("Acercar", "⊕", "Ver el tiempo más de cerca");
    row("Alejar", "⊖", "Ver más compases a la vez");
    row("Seguir", "⇥", "Pasar de página cuando el cabezal sale de lo que se ve", true, true);
}

void TransportControlsTest::buttonsAreTheRowsOfTheTable()
{
    const QToolButton* found = button(*ribbon_, QTest::currentDataTag());
    QVERIFY(found);
    QCOMPARE(found->objectName(), "btn_toolbar");
    QTEST(found->text(), "face");
    QTEST(found->toolTip(), "tooltip");
    QTEST(found->isCheckable(), "checkable");
    QTEST(found->isChecked(), "checked");
    QCOMPARE(found->focusPolicy(), Qt::NoFocus);
    QCOMPARE(found->cursor().shape(), Qt::PointingHandCursor);
}

void TransportControlsTest::spinBoxesAreTheRowsOfTheTable_data()
{
    QTest::addColumn<QString>("tooltip");
    QTest::addColumn<int>("least");
    QTest::addColumn<int>("most");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("width");
    QTest::newRow("Del compás") << "Primer compás del rango repetido" << 1 << 999 << 1 << 46;
    QTest::newRow("al compás") << "Último compás del rango repetido" << 1 << 999 << 4 << 46;
    QTest::newRow("Velocidad") << "Velocidad de la canción, en pulsos por minuto" << 40 << 240
                               << 120 << 56;
}

void TransportControlsTest::spinBoxesAreTheRowsOfTheTable()
{
    const QSpinBox* box = spin(*ribbon_, QTest::currentDataTag());
    QVERIFY(box);
    QTEST(box->toolTip(), "tooltip");
    QTEST(box->minimum(), "least");
    QTEST(box->maximum(), "most");
    QTEST(box->value(), "value");
    ribbon_->show();
    QTEST(box->width(), "width");
    ribbon_->resize(2500, 300);
    QTEST(box->width(), "width");
}

void TransportControlsTest::comboBoxesAreTheRowsOfTheTable_data()
{
    QTest::addColumn<QString>("tooltip");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<int>("index");
    QTest::newRow("Compás") << "Compás de la canción: cuántos pulsos tiene cada compás"
                            << QStringList{"4/4", "3/4", "2/4", "6/8"} << 0;
    QTest::newRow("Tonalidad") << "Nota principal de la canción"
                               << QStringList{"C / Do",    "C# / Do#", "D / Re",   "D# / Re#",
                                              "E / Mi",    "F / Fa",   "F# / Fa#", "G / Sol",
                                              "G# / Sol#", "A / La",   "A# / La#", "B / Si"}
                               << 0;
    QTest::newRow("Modo") << "Modo: Mayor suena alegre, Menor más triste"
                          << QStringList{"Mayor", "Menor"} << 0;
    QTest::newRow("Grilla") << "Qué está marcando la grilla: el pulso, su división o la subdivisión"
                            << simpleWords() << 1;
}

void TransportControlsTest::comboBoxesAreTheRowsOfTheTable()
{
    const QComboBox* box = combo(*ribbon_, QTest::currentDataTag());
    QVERIFY(box);
    QTEST(box->toolTip(), "tooltip");
    QTEST(entriesOf(box), "entries");
    QTEST(box->currentIndex(), "index");
    QVERIFY(!box->isEditable());
}

void TransportControlsTest::thePositionIsTheRowOfTheTable()
{
    const QLabel* position = Widgets::over<QLabel>(*ribbon_, "Posición");
    QVERIFY(position);
    QCOMPARE(position->text(), "1.1");
    QCOMPARE(position->toolTip(), "Dónde está el cabezal: compás.pulso");
    QCOMPARE(position->objectName(), "lbl_toolbar");
    QCOMPARE(position->alignment(), Qt::AlignCenter);
    QCOMPARE(position->minimumWidth(), 48);
}

void TransportControlsTest::thePositionIsLargeInEveryTheme_data()
{
    QTest::addColumn<int>("theme");
    QTest::newRow("no theme") << -1;
    QTest::newRow("light") << 0;
    QTest::newRow("dark") << 1;
}

void TransportControlsTest::thePositionIsLargeInEveryTheme()
{
    QFETCH(int, theme);
    if (theme >= 0)
        ThemeManager::instance()->setDark(theme == 1);
    ribbon_->show();
    const QFont font = Widgets::over<QLabel>(*ribbon_, "Posición")->font();
    QCOMPARE(font.pointSize(), 14);
    QCOMPARE(font.weight(), QFont::Bold);
}

void TransportControlsTest::theExportButtonsHaveFacesForWords_data()
{
    addCaptions({"Audio", "Audio HQ", "Partitura"});
}

void TransportControlsTest::theExportButtonsHaveFacesForWords()
{
    ThemeManager::instance()->setDark(false);
    ribbon_->show();
    QFETCH(QString, caption);
    const QToolButton* found = button(*ribbon_, caption);
    QCOMPARE(found->styleSheet(), "font-size: 13px; font-weight: 800;");
    QCOMPARE(found->font().pixelSize(), 13);
    QCOMPARE(found->font().weight(), QFont::ExtraBold);
}

void TransportControlsTest::otherButtonsHaveNoSheetOfTheirOwn()
{
    int plain = 0;
    for (const QToolButton* found : ribbon_->findChildren<QToolButton*>("btn_toolbar")) {
        if (found->styleSheet().isEmpty())
            ++plain;
    }
    QCOMPARE(plain, 16);
}

void TransportControlsTest::theRibbonPaintsItsOwnBackground()
{
    qApp->setStyleSheet("QWidget#page { background: #654321; } "
                        "QWidget#ribbon { background: #123456; }");
    QWidget page;
    page.setObjectName("page");
    page.resize(2500, 300);
    ribbon_->setParent(&page);
    ribbon_->resize(2500, 300);
    page.show();
    QCOMPARE(page.grab().toImage().pixelColor(2000, 150), QColor(0x12, 0x34, 0x56));
    ribbon_->setParent(nullptr);
}

// ---- For those who do not see it -----------------------------------------------------------

void TransportControlsTest::everyControlHasAName_data()
{
    QStringList captions;
    for (const Group& group : groupTable())
        captions += group.captions;
    addCaptions(captions);
}

void TransportControlsTest::everyControlHasAName()
{
    QFETCH(QString, caption);
    QWidget* widget = Widgets::over(*ribbon_, caption);
    QVERIFY(widget);
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget);
    QVERIFY(accessible);
    QVERIFY(!accessible->text(QAccessible::Name).isEmpty());
    QVERIFY(namesOf(accessible).contains(caption));
    QCOMPARE(accessible->text(QAccessible::Description), widget->toolTip());
}

void TransportControlsTest::everyCaptionOfAControlIsItsBuddy_data()
{
    addCaptions({"Del compás", "al compás", "Posición", "Velocidad", "Compás", "Tonalidad", "Modo",
                 "Grilla"});
}

void TransportControlsTest::everyCaptionOfAControlIsItsBuddy()
{
    QFETCH(QString, caption);
    QCOMPARE(Widgets::withText<QLabel>(*ribbon_, caption)->buddy(),
             Widgets::over(*ribbon_, caption));
}

void TransportControlsTest::theTabKeyGoesFromLeftToRight()
{
    ribbon_->show();
    QVERIFY(QTest::qWaitForWindowActive(ribbon_.get()));
    spin(*ribbon_, "Del compás")->setFocus();
    for (const char* next :
         {"al compás", "Velocidad", "Compás", "Tonalidad", "Modo", "Grilla", "Del compás"}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), Widgets::over(*ribbon_, next));
    }
}

// ---- Requests ------------------------------------------------------------------------------

void TransportControlsTest::aClickAsksForOneThing_data()
{
    QTest::addColumn<QString>("said");
    QTest::newRow("Nueva") << "new";
    QTest::newRow("Guardar") << "save";
    QTest::newRow("Abrir") << "open";
    QTest::newRow("Agregar") << "add track";
    QTest::newRow("Quitar") << "remove track";
    QTest::newRow("Grabar") << "record voice";
    QTest::newRow("Importar") << "import voice";
    QTest::newRow("Audio") << "export MP3";
    QTest::newRow("Audio HQ") << "export WAV";
    QTest::newRow("Partitura") << "export MIDI";
    QTest::newRow("Acercar") << "zoom in";
    QTest::newRow("Alejar") << "zoom out";
}

void TransportControlsTest::aClickAsksForOneThing()
{
    QFETCH(QString, said);
    Said ribbonSaid(*ribbon_);
    ribbon_->show();
    QToolButton* clicked = button(*ribbon_, QTest::currentDataTag());
    Widgets::click(clicked);
    QCOMPARE(ribbonSaid.take(), QStringList{said});
    Widgets::click(clicked);
    QCOMPARE(ribbonSaid.take(), QStringList{said});
}

void TransportControlsTest::playbackButtonsAskForNothing_data()
{
    addCaptions({"Reproducir", "Detener", "Repetir", "Metrónomo"});
}

void TransportControlsTest::playbackButtonsAskForNothing()
{
    const auto song = otherProject();
    ribbon_->setProject(song.get());
    const QJsonObject before = song->toJson();
    QFETCH(QString, caption);
    Said said(*ribbon_);
    Widgets::click(button(*ribbon_, caption));
    QCOMPARE(said.take(), QStringList());
    QCOMPARE(song->toJson(), before);
}

// ---- Edits ---------------------------------------------------------------------------------

void TransportControlsTest::aTypedTempoIsAnEdit()
{
    Said said(*ribbon_);
    type(spin(*ribbon_, "Velocidad"), "84");
    QCOMPARE(said.take(), QStringList{"bpm 84"});
    type(spin(*ribbon_, "Velocidad"), "150");
    QCOMPARE(said.take(), QStringList{"bpm 150"});
}

void TransportControlsTest::aTempoStaysInItsRange_data()
{
    QTest::addColumn<QString>("digits");
    QTest::addColumn<int>("bpm");
    QTest::newRow("the least") << "40" << 40;
    QTest::newRow("the most") << "240" << 240;
    QTest::newRow("below the least") << "39" << 120;
    QTest::newRow("beyond the most") << "241" << 120;
    QTest::newRow("below 0") << "-50" << 50;
    QTest::newRow("no number") << "x" << 120;
}

void TransportControlsTest::aTempoStaysInItsRange()
{
    QFETCH(QString, digits);
    QFETCH(int, bpm);
    Said said(*ribbon_);
    QSpinBox* box = spin(*ribbon_, "Velocidad");
    type(box, digits);
    QTest::keyClick(box, Qt::Key_Enter);
    QCOMPARE(box->value(), bpm);
    QCOMPARE(said.take().last(), QString("bpm %1").arg(bpm));
}

void TransportControlsTest::anArrowKeyIsAnEditOfTheTempo()
{
    Said said(*ribbon_);
    QTest::keyClick(spin(*ribbon_, "Velocidad"), Qt::Key_Up);
    QTest::keyClick(spin(*ribbon_, "Velocidad"), Qt::Key_Down);
    QCOMPARE(said.take(), (QStringList{"bpm 121", "bpm 120"}));
}

void TransportControlsTest::everyKeyIsAnEdit_data()
{
    QTest::addColumn<int>("root");
    const QStringList entries = entriesOf(combo(TransportControls(nullptr), "Tonalidad"));
    for (int root = 1; root < 12; ++root)
        QTest::newRow(qPrintable(entries.at(root))) << root;
}

void TransportControlsTest::everyKeyIsAnEdit()
{
    QFETCH(int, root);
    QComboBox* keys = combo(*ribbon_, "Tonalidad");
    Said said(*ribbon_);
    QStringList expected;
    for (int step = 1; step <= root; ++step) {
        QTest::keyClick(keys, Qt::Key_Down);
        expected.append(QString("key %1 0").arg(step));
    }
    QCOMPARE(keys->currentText(), QTest::currentDataTag());
    QCOMPARE(said.take(), expected);
}

void TransportControlsTest::allKeysAreSeenAtOnce()
{
    const auto* keys = Widgets::over<QComboBox>(*ribbon_, "Tonalidad");
    QVERIFY(keys->maxVisibleItems() >= keys->count());
}

void TransportControlsTest::aModeIsAnEdit()
{
    const auto song = project({}, {}, {}, KeySignature{.rootPitchClass = 5});
    ribbon_->setProject(song.get());
    Said said(*ribbon_);
    QTest::keyClick(combo(*ribbon_, "Modo"), Qt::Key_Down);
    QTest::keyClick(combo(*ribbon_, "Tonalidad"), Qt::Key_Up);
    QTest::keyClick(combo(*ribbon_, "Modo"), Qt::Key_Up);
    QCOMPARE(said.take(), (QStringList{"key 5 1", "key 4 1", "key 4 0"}));
}

void TransportControlsTest::aSilencedGuideIsAnEdit()
{
    Said said(*ribbon_);
    Widgets::click(button(*ribbon_, "Acordes"));
    Widgets::click(button(*ribbon_, "Acordes"));
    QCOMPARE(said.take(), (QStringList{"muted", "heard"}));
}

void TransportControlsTest::everyGridLevelIsAChange()
{
    Said said(*ribbon_);
    QComboBox* grid = combo(*ribbon_, "Grilla");
    QTest::keyClick(grid, Qt::Key_Up);
    QTest::keyClick(grid, Qt::Key_End);
    QTest::keyClick(grid, Qt::Key_Up);
    QCOMPARE(said.take(), (QStringList{"grid 0", "grid 2", "grid 1"}));
}

void TransportControlsTest::chosenAgainNothingIsEdited()
{
    Said said(*ribbon_);
    type(spin(*ribbon_, "Velocidad"), "120");
    QTest::keyClick(combo(*ribbon_, "Tonalidad"), Qt::Key_Home);
    QTest::keyClick(combo(*ribbon_, "Modo"), Qt::Key_Up);
    combo(*ribbon_, "Grilla")->setCurrentIndex(1);
    QCOMPARE(said.take(), QStringList());
}

void TransportControlsTest::editsDoNotTouchTheProject()
{
    const auto song = otherProject();
    ribbon_->setProject(song.get());
    const QJsonObject before = song->toJson();
    Said said(*ribbon_);
    type(spin(*ribbon_, "Velocidad"), "200");
    QTest::keyClick(combo(*ribbon_, "Tonalidad"), Qt::Key_Up);
    QTest::keyClick(combo(*ribbon_, "Modo"), Qt::Key_Up);
    QTest::keyClick(combo(*ribbon_, "Grilla"), Qt::Key_Up);
    Widgets::click(button(*ribbon_, "Acordes"));
    QCOMPARE(said.take(), (QStringList{"bpm 200", "key 8 1", "key 8 0", "grid 0", "heard"}));
    QCOMPARE(song->toJson(), before);
}

// ---- Projects ------------------------------------------------------------------------------

void TransportControlsTest::aProjectIsShown()
{
    const auto song = otherProject();
    ribbon_->setProject(song.get());
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 84);
    QCOMPARE(combo(*ribbon_, "Tonalidad")->currentText(), "A / La");
    QCOMPARE(combo(*ribbon_, "Modo")->currentText(), "Menor");
    QVERIFY(!button(*ribbon_, "Acordes")->isChecked());
    QCOMPARE(entriesOf(combo(*ribbon_, "Grilla")), compoundWords());

    const Project blank;
    ribbon_->setProject(const_cast<Project*>(&blank));
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 120);
    QCOMPARE(combo(*ribbon_, "Tonalidad")->currentText(), "C / Do");
    QCOMPARE(combo(*ribbon_, "Modo")->currentText(), "Mayor");
    QVERIFY(button(*ribbon_, "Acordes")->isChecked());
    QCOMPARE(entriesOf(combo(*ribbon_, "Grilla")), simpleWords());
}

void TransportControlsTest::loadingAnnouncesNothing()
{
    Said said(*ribbon_);
    const auto song = otherProject();
    Project blank;
    ribbon_->setProject(song.get());
    ribbon_->setProject(&blank);
    ribbon_->setProject(nullptr);
    QCOMPARE(said.take(), QStringList());
}

void TransportControlsTest::changesAnnounceNothing()
{
    Project song;
    ribbon_->setProject(&song);
    Said said(*ribbon_);
    song.loadJson(otherProject()->toJson());
    emit song.changed();
    song.loadJson(Project().toJson());
    ribbon_->updateFromProject();
    QCOMPARE(said.take(), QStringList());
}

void TransportControlsTest::changesAreFollowed()
{
    Project song;
    ribbon_->setProject(&song);
    song.bpm = 60;
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 120);
    emit song.changed();
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 60);
    song.timeSignature = kSixEight;
    ribbon_->updateFromProject();
    QCOMPARE(entriesOf(combo(*ribbon_, "Grilla")), compoundWords());
}

void TransportControlsTest::theMeterOfTheWorkIsShownAndAskedFor()
{
    Project song;
    ribbon_->setProject(&song);
    Said said(*ribbon_);
    QComboBox* box = combo(*ribbon_, "Compás");
    QCOMPARE(box->currentText(), "4/4");
    song.timeSignature = {.numerator = 5, .denominator = 4, .isCompound = false};
    emit song.changed();
    QCOMPARE(box->currentText(), "5/4");
    QCOMPARE(entriesOf(box), (QStringList{"4/4", "3/4", "2/4", "6/8", "5/4"}));
    QCOMPARE(said.take(), QStringList());
    box->setCurrentIndex(3);
    QCOMPARE(said.take(), QStringList{"meter 6/8"});
    song.timeSignature = kSixEight;
    emit song.changed();
    QCOMPARE(box->currentText(), "6/8");
    QCOMPARE(entriesOf(box), (QStringList{"4/4", "3/4", "2/4", "6/8"}));
}

void TransportControlsTest::theGuardEndsWithTheUpdate()
{
    const auto song = otherProject();
    ribbon_->setProject(song.get());
    emit song->changed();
    Said said(*ribbon_);
    QTest::keyClick(spin(*ribbon_, "Velocidad"), Qt::Key_Up);
    QTest::keyClick(combo(*ribbon_, "Grilla"), Qt::Key_Down);
    QCOMPARE(said.take(), (QStringList{"bpm 85", "grid 2"}));
}

void TransportControlsTest::aModeOfTwoNames_data()
{
    QTest::addColumn<KeyMode>("mode");
    QTest::addColumn<QString>("shown");
    QTest::newRow("Major") << KeyMode::Major << "Mayor";
    QTest::newRow("Minor") << KeyMode::Minor << "Menor";
    QTest::newRow("Dorian") << KeyMode::Dorian << "Mayor";
    QTest::newRow("Lydian") << KeyMode::Lydian << "Mayor";
    QTest::newRow("a mode of no name") << static_cast<KeyMode>(77) << "Mayor";
}

void TransportControlsTest::aModeOfTwoNames()
{
    QFETCH(KeyMode, mode);
    // The other entry stands before, so that the box has to move.
    const auto former = project({}, {}, {}, KeySignature{.mode = KeyMode::Minor});
    ribbon_->setProject(former.get());
    const auto song = project({}, {}, {}, KeySignature{.rootPitchClass = 2, .mode = mode});
    ribbon_->setProject(song.get());
    QTEST(combo(*ribbon_, "Modo")->currentText(), "shown");
    QCOMPARE(song->keySignature.mode, mode);
}

void TransportControlsTest::theGridSpeaksTheMeter()
{
    Project song;
    ribbon_->setProject(&song);
    song.timeSignature = kSixEight;
    emit song.changed();
    QCOMPARE(entriesOf(combo(*ribbon_, "Grilla")), compoundWords());
    song.timeSignature.isCompound = false;
    emit song.changed();
    QCOMPARE(entriesOf(combo(*ribbon_, "Grilla")), simpleWords());
}

void TransportControlsTest::theGridGrowsWithTheWordsOfTheMeter()
{
    ribbon_->show();
    QComboBox* grid = combo(*ribbon_, "Grilla");
    const int simple = grid->width();
    Project song;
    song.timeSignature = kSixEight;
    ribbon_->setProject(&song);
    const QFontMetrics metrics = grid->fontMetrics();
    const int growth =
        metrics.horizontalAdvance(compoundWords()[1]) - metrics.horizontalAdvance(simpleWords()[1]);
    QVERIFY(growth > 0);
    QTRY_VERIFY(grid->width() >= simple + growth);
}

void TransportControlsTest::theGridKeepsItsLevel()
{
    combo(*ribbon_, "Grilla")->setCurrentIndex(2);
    const auto song = otherProject();
    ribbon_->setProject(song.get());
    QCOMPARE(combo(*ribbon_, "Grilla")->currentText(), "Subdivisión (de a 6)");
}

void TransportControlsTest::withoutAProjectTheGridSpeaksSimply()
{
    const auto song = otherProject();
    ribbon_->setProject(song.get());
    ribbon_->setProject(nullptr);
    QCOMPARE(entriesOf(combo(*ribbon_, "Grilla")), simpleWords());
}

void TransportControlsTest::theFormerProjectIsNotFollowed()
{
    Project former;
    const auto song = otherProject();
    ribbon_->setProject(&former);
    ribbon_->setProject(song.get());
    // What was typed must not be taken back by a project that is no longer shown.
    spin(*ribbon_, "Velocidad")->setValue(200);
    emit former.changed();
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 200);
    emit song->changed();
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 84);
    ribbon_->setProject(nullptr);
    spin(*ribbon_, "Velocidad")->setValue(200);
    emit song->changed();
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 200);
}

void TransportControlsTest::theSameProjectTwiceIsFollowedOnce()
{
    Project song;
    ribbon_->setProject(&song);
    ribbon_->setProject(&song);
    song.bpm = 90;
    emit song.changed();
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 90);
    Project other;
    ribbon_->setProject(&other);
    emit song.changed();
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 120);
}

void TransportControlsTest::aProjectThatIsGoneIsForgotten()
{
    auto song = otherProject();
    ribbon_->setProject(song.get());
    song.reset();
    ribbon_->updateFromProject();
    Project other;
    ribbon_->setProject(&other);
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 120);
}

void TransportControlsTest::hostileProjectsAreShown_data()
{
    QTest::addColumn<int>("bpm");
    QTest::addColumn<int>("root");
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("shownBpm");
    QTest::addColumn<int>("shownRoot");
    const TimeSignature four;
    constexpr int kLeast = std::numeric_limits<int>::min();
    constexpr int kMost = std::numeric_limits<int>::max();
    QTest::newRow("a denominator of 0")
        << 100 << 3 << TimeSignature{.numerator = 4, .denominator = 0} << 100 << 3;
    QTest::newRow("a meter of zeros")
        << 100 << 3 << TimeSignature{.numerator = 0, .denominator = 0} << 100 << 3;
    QTest::newRow("a negative meter")
        << 100 << 3 << TimeSignature{.numerator = -4, .denominator = 4} << 100 << 3;
    QTest::newRow("a root below the first") << 100 << -1 << four << 100 << -1;
    QTest::newRow("a root beyond the last") << 100 << 99 << four << 100 << -1;
    QTest::newRow("the least root") << 100 << kLeast << four << 100 << -1;
    QTest::newRow("the largest root") << 100 << kMost << four << 100 << -1;
    QTest::newRow("a tempo below 0") << -5 << 3 << four << 40 << 3;
    QTest::newRow("the least tempo") << kLeast << 3 << four << 40 << 3;
    QTest::newRow("the largest tempo") << kMost << 3 << four << 240 << 3;
}

void TransportControlsTest::hostileProjectsAreShown()
{
    QFETCH(int, bpm);
    QFETCH(int, root);
    QFETCH(TimeSignature, meter);
    const auto song = project({}, {}, meter, KeySignature{.rootPitchClass = root}, bpm);
    const QJsonObject before = song->toJson();
    Said said(*ribbon_);
    ribbon_->setProject(song.get());
    emit song->changed();
    QTEST(spin(*ribbon_, "Velocidad")->value(), "shownBpm");
    QTEST(combo(*ribbon_, "Tonalidad")->currentIndex(), "shownRoot");
    QCOMPARE(said.take(), QStringList());
    QCOMPARE(song->toJson(), before);
}

void TransportControlsTest::generatedProjectsAnnounceNothing()
{
    Said said(*ribbon_);
    Project song;
    ribbon_->setProject(&song);
    for (quint32 seed = 0; seed < 300; ++seed) {
        Generator(seed, seed % 2 == 0 ? Numbers::Hostile : Numbers::Musical).fill(song, 2);
        emit song.changed();
        QCOMPARE(spin(*ribbon_, "Velocidad")->value(), std::clamp(song.bpm, 40, 240));
        QCOMPARE(button(*ribbon_, "Acordes")->isChecked(), !song.harmonyTrack.muted);
    }
    QCOMPARE(said.take(), QStringList());
}

// ---- Without an engine ---------------------------------------------------------------------

void TransportControlsTest::withoutAnEngineTheTransportDoesNothing()
{
    const auto song = otherProject();
    ribbon_->setProject(song.get());
    Said said(*ribbon_);
    ribbon_->show();
    for (const char* caption : {"Reproducir", "Detener", "Repetir", "Metrónomo"})
        Widgets::click(button(*ribbon_, caption));
    type(spin(*ribbon_, "Del compás"), "8");
    type(spin(*ribbon_, "al compás"), "3");
    QCOMPARE(button(*ribbon_, "Reproducir")->text(), "▶");
    QCOMPARE(Widgets::over<QLabel>(*ribbon_, "Posición")->text(), "1.1");
    QCOMPARE(said.take(), QStringList());
}

void TransportControlsTest::withoutAProjectNothingBreaks()
{
    ribbon_->updateFromProject();
    ribbon_->setProject(nullptr);
    for (QToolButton* each : ribbon_->findChildren<QToolButton*>("btn_toolbar"))
        Widgets::click(each);
    QCOMPARE(spin(*ribbon_, "Velocidad")->value(), 120);
    QCOMPARE(combo(*ribbon_, "Tonalidad")->currentIndex(), 0);
    QVERIFY(!button(*ribbon_, "Acordes")->isChecked());
}

VELTA_TEST(TransportControlsTest)

} // namespace TransportControlsTests

#include "TransportControlsTest.moc"
