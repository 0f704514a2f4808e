#include "model/GridSubdivision.h"
#include "shell/LoopBrowser.h"
#include "support/ContextTranslator.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoRollCanvas.h"

#include <QComboBox>
#include <QTest>
#include <QTreeWidget>

#include <optional>

namespace MainWindowMenusTests {

using namespace ProjectBuilder;

namespace {

constexpr TimeSignature kSixEight{.numerator = 6, .denominator = 8, .isCompound = true};

/// The entries of a menu, with a dash for each separator.
QStringList entriesOf(const QMenu* menu)
{
    QStringList entries;
    for (const QAction* action : menu->actions())
        entries.append(action->isSeparator() ? "-" : action->text());
    return entries;
}

/// Lays an answer ready that gives up whatever is asked.
void giveUpNext(ScriptedPrompts& prompts, const QString& call)
{
    if (call.startsWith("run"))
        prompts.inDialog([](QDialog& dialog) { dialog.reject(); });
    else if (call.startsWith("askText"))
        prompts.giveUpText();
    else if (call.startsWith("askSaveFile"))
        prompts.giveUpPath();
    else if (call.startsWith("suggest"))
        prompts.answerOffer(false);
}

} // namespace

class MainWindowMenusTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Menus
    void theMenusStandInTheirOrder();
    void menusHoldTheirEntries_data();
    void menusHoldTheirEntries();
    void shortcutsAreTheStandardKeys_data();
    void shortcutsAreTheStandardKeys();
    void otherEntriesHaveNoShortcut_data();
    void otherEntriesHaveNoShortcut();
    void theKeysStandInTheTips_data();
    void theKeysStandInTheTips();
    void theEntriesOfPlaybackDoWhatTheySay();
    void switchesOfMenuAndRibbonAgree_data();
    void switchesOfMenuAndRibbonAgree();
    void theKeysOfAreasGoRound();
    void theListOfKeysIsThatOfTheMenus();
    void theListOfKeysLeavesOutWhatNoKeyboardHas();
    void noShortcutStandsTwice();
    void aGuideThatIsMissingIsToldOf();
    void undoAndRedoStartDisabled();
    void entriesDoWhatTheySay_data();
    void entriesDoWhatTheySay();
    void theRibbonDoesTheSame_data();
    void theRibbonDoesTheSame();
    void shortcutsReachTheWindow_data();
    void shortcutsReachTheWindow();
    void quittingClosesTheWindow();
    void textsBelongToTheWindow();

    // What the grid shows
    void everyLevelHasItsEntry();
    void menuAndRibbonMarkTheSameLevel();
    void theWordsFollowTheMeter();
    void aWorkThatIsNotOpenedChangesNoWords();

    // The space bar
    void theSpaceActionReachesFurtherThanOthers();
    void spacePlaysAndPauses();
    void spaceIsHeardInOtherWindows();
    void openingAWorkComesBackToTheEditor();

private:
    QMenu* gridMenu() { return Widgets::menu(stage_->window(), "Qué marca la grilla"); }

    QAction* spaceAction()
    {
        for (QAction* action : stage_->window().actions()) {
            if (action->text() == "Reproducir/Pausar")
                return action;
        }
        return nullptr;
    }

    /// Gives the window the page that it does not have.
    void addSecondPage()
    {
        stage_->pages().addWidget(new QWidget);
        stage_->pages().setCurrentIndex(1);
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowMenusTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
}

void MainWindowMenusTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

// ---- Menus ---------------------------------------------------------------------------------

void MainWindowMenusTest::theMenusStandInTheirOrder()
{
    QStringList titles;
    for (const QAction* action : stage_->window().menuBar()->actions())
        titles.append(action->text());
    QCOMPARE(titles,
             (QStringList{"&Archivo", "&Edición", "&Ver", "&Reproducción", "Ve&lta", "A&yuda"}));
}

void MainWindowMenusTest::menusHoldTheirEntries_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("entries");
    QTest::newRow("Archivo") << "&Archivo"
                             << QStringList{"Obra nueva…",
                                            "Abrir obra…",
                                            "Obras recientes",
                                            "Guardar",
                                            "Guardar como…",
                                            "Duplicar obra",
                                            "Cambiar nombre…",
                                            "-",
                                            "Importar audio de voz…",
                                            "-",
                                            "Exportar WAV…",
                                            "Exportar MP3…",
                                            "Exportar MIDI…",
                                            "Imprimir o guardar hoja…",
                                            "Exportar obra completa…",
                                            "-",
                                            "Salir"};
    QTest::newRow("Edición") << "&Edición"
                             << QStringList{"Deshacer", "Rehacer", "-",
                                            "Cortar",   "Copiar",  "Pegar",
                                            "Duplicar", "-",       "Seleccionar todo"};
    QTest::newRow("Ver") << "&Ver" << QStringList{"Qué marca la grilla", "-", "Acercar (tiempo)",
                                                  "Alejar (tiempo)",     "-", "Seguir el cabezal"};
    QTest::newRow("Reproducción") << "&Reproducción"
                                  << QStringList{"Reproducir/Pausar",
                                                 "Detener",
                                                 "Repetir",
                                                 "Metrónomo",
                                                 "-",
                                                 "Grabar voz",
                                                 "Contar un compás antes de grabar"};
    QTest::newRow("Velta") << "Ve&lta"
                           << QStringList{"Agregar velta", "Quitar velta", "-", "Área siguiente",
                                          "Área anterior"};
    QTest::newRow("Ayuda") << "A&yuda"
                           << QStringList{"Guía de Velta", "Atajos de teclado", "-",
                                          "Acerca de Velta…"};
    QTest::newRow("Qué marca la grilla")
        << "Qué marca la grilla"
        << QStringList{"Pulso (el pie)", "División binaria (de a 2)", "Subdivisión (de a 4)"};
}

void MainWindowMenusTest::menusHoldTheirEntries()
{
    QFETCH(QString, title);
    const QMenu* menu = Widgets::menu(stage_->window(), title);
    QVERIFY(menu);
    QTEST(entriesOf(menu), "entries");
}

void MainWindowMenusTest::shortcutsAreTheStandardKeys_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Obra nueva…") << int(QKeySequence::New);
    QTest::newRow("Abrir obra…") << int(QKeySequence::Open);
    QTest::newRow("Guardar") << int(QKeySequence::Save);
    QTest::newRow("Salir") << int(QKeySequence::Quit);
    QTest::newRow("Deshacer") << int(QKeySequence::Undo);
    QTest::newRow("Rehacer") << int(QKeySequence::Redo);
    QTest::newRow("Acercar (tiempo)") << int(QKeySequence::ZoomIn);
    QTest::newRow("Alejar (tiempo)") << int(QKeySequence::ZoomOut);
}

void MainWindowMenusTest::shortcutsAreTheStandardKeys()
{
    QFETCH(int, key);
    const QAction* action = Widgets::entry(stage_->window(), QTest::currentDataTag());
    QCOMPARE(action->shortcuts(),
             QKeySequence::keyBindings(static_cast<QKeySequence::StandardKey>(key)));
    QCOMPARE(action->shortcutContext(), Qt::WindowShortcut);
}

void MainWindowMenusTest::otherEntriesHaveNoShortcut_data()
{
    QTest::addColumn<QString>("entry");
    for (const char* entry : {"Pulso (el pie)", "División binaria (de a 2)", "Subdivisión (de a 4)",
                              "Atajos de teclado", "Acerca de Velta…"})
        QTest::newRow(entry) << QString(entry);
}

void MainWindowMenusTest::theKeysStandInTheTips_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("caption");
    QTest::newRow("Reproducir/Pausar") << "Space"
                                       << "Reproducir";
    QTest::newRow("Detener") << "Shift+Space"
                             << "Detener";
    QTest::newRow("Repetir") << "Ctrl+L"
                             << "Repetir";
    QTest::newRow("Metrónomo") << "Ctrl+M"
                               << "Metrónomo";
    QTest::newRow("Grabar voz") << "Ctrl+R"
                                << "Grabar";
    QTest::newRow("Importar audio de voz…") << "Ctrl+I"
                                            << "Importar";
    QTest::newRow("Agregar velta") << "Ctrl+T"
                                   << "Agregar";
    QTest::newRow("Quitar velta") << "Ctrl+Shift+T"
                                  << "Quitar";
    QTest::newRow("Exportar MP3…") << "Ctrl+E"
                                   << "Audio";
    QTest::newRow("Exportar WAV…") << "Ctrl+Shift+E"
                                   << "Audio HQ";
    QTest::newRow("Exportar MIDI…") << "Ctrl+Alt+E"
                                    << "Partitura";
    QTest::newRow("Acercar (tiempo)") << "Ctrl++"
                                      << "Acercar";
    QTest::newRow("Alejar (tiempo)") << "Ctrl+-"
                                     << "Alejar";
    QTest::newRow("Seguir el cabezal") << "Ctrl+J"
                                       << "Seguir";
}

void MainWindowMenusTest::theKeysStandInTheTips()
{
    QFETCH(QString, keys);
    QFETCH(QString, caption);
    const QAction* entry = Widgets::entry(stage_->window(), QTest::currentDataTag());
    QVERIFY(entry);
    QCOMPARE(entry->shortcut(), QKeySequence(keys));
    const QString tip = Widgets::over<QToolButton>(stage_->ribbon(), caption)->toolTip();
    const QString told =
        keys == "Space" ? "Espacio" : QKeySequence(keys).toString(QKeySequence::NativeText);
    QVERIFY2(tip.endsWith(" (" + told + ")"), qPrintable(tip));
}

void MainWindowMenusTest::theEntriesOfPlaybackDoWhatTheySay()
{
    stage_->engine().setPlayheadBeat(2.0);
    stage_->choose("Reproducir/Pausar");
    QVERIFY(stage_->engine().isPlaying());
    stage_->choose("Detener");
    QVERIFY(!stage_->engine().isPlaying());
    QCOMPARE(stage_->engine().playheadBeat(), 0.0);
    stage_->choose("Agregar velta");
    QCOMPARE(stage_->song().tracks.size(), 2);
    stage_->choose("Quitar velta");
    QCOMPARE(stage_->song().tracks.size(), 1);
}

void MainWindowMenusTest::switchesOfMenuAndRibbonAgree_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("Repetir") << "Repetir";
    QTest::newRow("Metrónomo") << "Metrónomo";
}

void MainWindowMenusTest::switchesOfMenuAndRibbonAgree()
{
    QFETCH(QString, name);
    QAction* entry = Widgets::entry(stage_->window(), name);
    const auto* button = Widgets::over<QToolButton>(stage_->ribbon(), name);
    QVERIFY(entry->isCheckable() && !entry->isChecked());
    for (const bool on : {true, false}) {
        entry->trigger();
        QCOMPARE(button->isChecked(), on);
        QCOMPARE(entry->isChecked(), on);
    }
    stage_->clickRibbon(name);
    QVERIFY(entry->isChecked() && button->isChecked());
}

void MainWindowMenusTest::theKeysOfAreasGoRound()
{
    stage_->window().resize(1360, 860);
    QVERIFY(stage_->showWindow());
    auto& window = stage_->window();
    const QList<QWidget*> areas{
        window.findChild<PianoRollCanvas*>(), window.findChild<TrackArranger*>(),
        window.findChild<LoopBrowser*>(), window.findChild<TrackHeaderPanel*>(), &stage_->ribbon()};
    const auto hasTheKeys = [&](const QWidget* area) {
        return window.focusWidget() == area || area->isAncestorOf(window.focusWidget());
    };
    QVERIFY(hasTheKeys(areas.first()));
    for (int step = 1; step <= 5; ++step) {
        QTest::keyClick(&window, Qt::Key_F6);
        QVERIFY2(hasTheKeys(areas.at(step % 5)), qPrintable(QString::number(step)));
    }
    for (int step = 4; step >= 0; --step) {
        QTest::keyClick(&window, Qt::Key_F6, Qt::ShiftModifier);
        QVERIFY2(hasTheKeys(areas.at(step)), qPrintable(QString::number(step)));
    }
}

void MainWindowMenusTest::theListOfKeysIsThatOfTheMenus()
{
    QStringList rows;
    stage_->prompts().inDialog([&](QDialog& dialog) {
        const auto* list = dialog.findChild<QTreeWidget*>();
        for (int top = 0; top < list->topLevelItemCount(); ++top) {
            const QTreeWidgetItem* heading = list->topLevelItem(top);
            for (int row = 0; row < heading->childCount(); ++row)
                rows.append(heading->child(row)->text(0) + '|' + heading->child(row)->text(1));
        }
        dialog.reject();
    });
    stage_->choose("Atajos de teclado");
    for (const QMenu* menu : stage_->window().findChildren<QMenu*>()) {
        for (const QAction* action : menu->actions()) {
            if (!action->shortcuts().isEmpty())
                QVERIFY2(rows.contains(action->text() + '|' +
                                       QKeySequence::listToString(action->shortcuts(),
                                                                  QKeySequence::NativeText)),
                         qPrintable(action->text()));
        }
    }
    // What the editors do with keys that stand in no menu.
    for (const char* row : {"Escribir en el cabezal la última nota que tocaste|Return",
                            "Ir a la nota anterior o a la siguiente|Ctrl+Left; Ctrl+Right",
                            "Mover las notas seleccionadas|Left; Right; Up; Down",
                            "Mover los bloques seleccionados|Left; Right",
                            "Seleccionar también lo anterior o lo siguiente|"
                            "Ctrl+Shift+Left; Ctrl+Shift+Right",
                            "Ir al carril de arriba o de abajo|Ctrl+Up; Ctrl+Down",
                            "Elegir un acorde, en el carril de acordes|Return",
                            "Alargar o acortar lo seleccionado|Shift+Left; Shift+Right",
                            "Mover el cabezal un compás|PgUp; PgDown"})
        QVERIFY2(rows.contains(row), row);
}

// Some platforms have keys for commands that only a few keyboards have.
void MainWindowMenusTest::theListOfKeysLeavesOutWhatNoKeyboardHas()
{
    const QList<QKeySequence> keys{Qt::CTRL | Qt::Key_Z, Qt::Key_F14, Qt::Key_Undo, Qt::Key_F12};
    Widgets::entry(stage_->window(), "Deshacer")->setShortcuts(keys);
    Widgets::entry(stage_->window(), "Rehacer")->setShortcuts({Qt::Key_F35});
    QStringList rows;
    stage_->prompts().inDialog([&](QDialog& dialog) {
        const auto* list = dialog.findChild<QTreeWidget*>();
        for (const QTreeWidgetItem* row :
             list->findItems("hacer", Qt::MatchContains | Qt::MatchRecursive))
            rows.append(row->text(0) + '|' + row->text(1));
        dialog.reject();
    });
    stage_->choose("Atajos de teclado");
    QCOMPARE(rows, QStringList{"Deshacer|Ctrl+Z; F12"});
    QCOMPARE(Widgets::entry(stage_->window(), "Deshacer")->shortcuts(), keys);
}

void MainWindowMenusTest::otherEntriesHaveNoShortcut()
{
    QFETCH(QString, entry);
    QVERIFY(Widgets::entry(stage_->window(), entry)->shortcuts().isEmpty());
}

void MainWindowMenusTest::noShortcutStandsTwice()
{
    QList<QKeySequence> seen;
    for (const QAction* action : stage_->window().findChildren<QAction*>()) {
        for (const QKeySequence& shortcut : action->shortcuts()) {
            QVERIFY2(!seen.contains(shortcut), qPrintable(shortcut.toString()));
            seen.append(shortcut);
        }
    }
    QVERIFY(seen.size() >= 8);
}

void MainWindowMenusTest::aGuideThatIsMissingIsToldOf()
{
    stage_->choose("Guía de Velta");
    QCOMPARE(stage_->prompts().calls(),
             QStringList{"warn | Guía de Velta | No pude abrir la guía. Está en este archivo:\n" +
                         MainWindow::resourcesDir() + "/guia/index.html"});
}

void MainWindowMenusTest::undoAndRedoStartDisabled()
{
    QVERIFY(!stage_->canUndo());
    QVERIFY(!stage_->canRedo());
}

void MainWindowMenusTest::entriesDoWhatTheySay_data()
{
    QTest::addColumn<QString>("call");
    QTest::newRow("Obra nueva…") << "run | Nuevo proyecto";
    QTest::newRow("Abrir obra…")
        << "suggest | Abrir obra | Todavía no hay ninguna obra guardada.\n\nCuando guardes esta "
           "(Archivo → Guardar), va a aparecer acá. | Desde un archivo…";
    QTest::newRow("Guardar")
        << "askText | Guardar obra | ¿Cómo se llama esta obra? | Obra sin título";
    QTest::newRow("Exportar WAV…")
        << "askSaveFile | Exportar WAV | Obra sin título.wav | WAV (*.wav)";
    QTest::newRow("Exportar MP3…")
        << "askSaveFile | Exportar MP3 | Obra sin título.mp3 | MP3 (*.mp3)";
    QTest::newRow("Exportar MIDI…")
        << "askSaveFile | Exportar MIDI | Obra sin título.mid | MIDI (*.mid)";
}

void MainWindowMenusTest::entriesDoWhatTheySay()
{
    QFETCH(QString, call);
    const QJsonObject before = stage_->song().toJson();
    giveUpNext(stage_->prompts(), call);
    stage_->choose(QTest::currentDataTag());
    QCOMPARE(stage_->prompts().calls(), QStringList{call});
    QCOMPARE(stage_->song().toJson(), before);
    QCOMPARE(stage_->message(), QString());
}

void MainWindowMenusTest::theRibbonDoesTheSame_data()
{
    entriesDoWhatTheySay_data();
}

void MainWindowMenusTest::theRibbonDoesTheSame()
{
    static const QHash<QString, QString> kCaptions{
        {"Obra nueva…", "Nueva"},      {"Abrir obra…", "Abrir"},   {"Guardar", "Guardar"},
        {"Exportar WAV…", "Audio HQ"}, {"Exportar MP3…", "Audio"}, {"Exportar MIDI…", "Partitura"}};
    QFETCH(QString, call);
    giveUpNext(stage_->prompts(), call);
    stage_->clickRibbon(kCaptions.value(QTest::currentDataTag()));
    QCOMPARE(stage_->prompts().calls(), QStringList{call});
}

void MainWindowMenusTest::shortcutsReachTheWindow_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("call");
    QTest::newRow("New") << int(QKeySequence::New) << "run | Nuevo proyecto";
    QTest::newRow("Open") << int(QKeySequence::Open) << "suggest | Abrir obra | ";
    QTest::newRow("Save") << int(QKeySequence::Save) << "askText | Guardar obra | ";
}

void MainWindowMenusTest::shortcutsReachTheWindow()
{
    QFETCH(int, key);
    QFETCH(QString, call);
    QVERIFY(stage_->showWindow());
    giveUpNext(stage_->prompts(), call);
    QTest::keySequence(&stage_->window(),
                       QKeySequence(static_cast<QKeySequence::StandardKey>(key)));
    QCOMPARE(stage_->prompts().calls().size(), 1);
    QVERIFY(stage_->prompts().calls().first().startsWith(call));
}

void MainWindowMenusTest::quittingClosesTheWindow()
{
    stage_->window().show();
    stage_->choose("Salir");
    QVERIFY(!stage_->window().isVisible());
    QCOMPARE(stage_->prompts().calls(), QStringList());
}

void MainWindowMenusTest::textsBelongToTheWindow()
{
    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);
    WindowStage stage;
    QCOMPARE(stage.song().name, "MainWindow: Obra sin título");
    QCOMPARE(stage.window().windowTitle(), "MainWindow: Velta — MainWindow: Obra sin título[*]");
    for (const char* title : {"&Archivo", "&Edición", "&Ver", "Qué marca la grilla"})
        QVERIFY(Widgets::menu(stage.window(), QString("MainWindow: ") + title));
    for (const char* entry : {"Obra nueva…", "Salir", "Alejar (tiempo)"})
        QVERIFY(Widgets::entry(stage.window(), QString("MainWindow: ") + entry));
    QVERIFY(Widgets::entry(stage.window(), "EditMenu: Deshacer"));
    QVERIFY(Widgets::entry(stage.window(), "Grilla: Pulso (el pie)"));
}

// ---- What the grid shows -------------------------------------------------------------------

void MainWindowMenusTest::everyLevelHasItsEntry()
{
    const QList<QAction*> actions = gridMenu()->actions();
    QCOMPARE(actions.size(), 3);
    for (int level = 0; level < 3; ++level) {
        QCOMPARE(actions.at(level)->data().value<GridSubdivisionLevel>(),
                 static_cast<GridSubdivisionLevel>(level));
        QCOMPARE(actions.at(level)->data().toInt(), level);
    }
}

void MainWindowMenusTest::menuAndRibbonMarkTheSameLevel()
{
    const QJsonObject before = stage_->song().toJson();
    auto* box = Widgets::over<QComboBox>(stage_->ribbon(), "Grilla");
    const auto marked = [&] {
        QList<int> levels;
        for (const QAction* action : gridMenu()->actions()) {
            if (action->isChecked())
                levels.append(action->data().toInt());
        }
        return levels;
    };
    QCOMPARE(marked(), QList{box->currentIndex()});
    for (const int level : {0, 2, 1, 1}) {
        gridMenu()->actions().at(level)->trigger();
        QCOMPARE(box->currentIndex(), level);
        QCOMPARE(marked(), QList{level});
    }
    for (const int level : {2, 0}) {
        box->setCurrentIndex(level);
        QCOMPARE(marked(), QList{level});
    }
    QCOMPARE(stage_->song().toJson(), before);
}

void MainWindowMenusTest::theWordsFollowTheMeter()
{
    QVERIFY(stage_->saveWork("chacarera", *project({}, {}, kSixEight)));
    QVERIFY(stage_->saveWork("vals", *project({}, {}, {.numerator = 3, .denominator = 4})));
    stage_->window().openProject("chacarera");
    QCOMPARE(entriesOf(gridMenu()),
             (QStringList{"Pulso (el pie)", "División ternaria (de a 3)", "Subdivisión (de a 6)"}));
    stage_->window().openProject("vals");
    const QStringList simple{"Pulso (el pie)", "División binaria (de a 2)", "Subdivisión (de a 4)"};
    QCOMPARE(entriesOf(gridMenu()), simple);
    stage_->window().openProject("chacarera");
    stage_->window().startBlankProject();
    QCOMPARE(entriesOf(gridMenu()), simple);
}

void MainWindowMenusTest::aWorkThatIsNotOpenedChangesNoWords()
{
    QVERIFY(stage_->saveWork("chacarera", *project({}, {}, kSixEight)));
    stage_->window().openProject("chacarera");
    stage_->window().openProject("nothing");
    QCOMPARE(entriesOf(gridMenu()).at(1), "División ternaria (de a 3)");
    QCOMPARE(stage_->prompts().calls().size(), 1);
}

// ---- The space bar -------------------------------------------------------------------------

void MainWindowMenusTest::theSpaceActionReachesFurtherThanOthers()
{
    const QAction* action = spaceAction();
    QVERIFY(action);
    QCOMPARE(action->shortcuts(), QList{QKeySequence(Qt::Key_Space)});
    QCOMPARE(action->shortcutContext(), Qt::ApplicationShortcut);
    QCOMPARE(Widgets::entry(stage_->window(), "Reproducir/Pausar"), action);
    QVERIFY(action->isEnabled());
}

void MainWindowMenusTest::spacePlaysAndPauses()
{
    QVERIFY(stage_->showWindow());
    stage_->engine().setPlayheadBeat(2.0);
    QTest::keyClick(&stage_->window(), Qt::Key_Space);
    QVERIFY(stage_->engine().isPlaying());
    QVERIFY(stage_->engine().playheadBeat() >= 2.0);
    QTest::keyClick(&stage_->window(), Qt::Key_Space);
    QVERIFY(!stage_->engine().isPlaying());
    QVERIFY(stage_->engine().playheadBeat() >= 2.0);
}

void MainWindowMenusTest::spaceIsHeardInOtherWindows()
{
    QVERIFY(stage_->showWindow());
    QWidget other;
    other.show();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QTest::keyClick(&other, Qt::Key_Space);
    QVERIFY(stage_->engine().isPlaying());
}

void MainWindowMenusTest::openingAWorkComesBackToTheEditor()
{
    addSecondPage();
    stage_->window().startBlankProject();
    QCOMPARE(stage_->pages().currentIndex(), 0);
}

VELTA_TEST(MainWindowMenusTest)

} // namespace MainWindowMenusTests

#include "MainWindowMenusTest.moc"
