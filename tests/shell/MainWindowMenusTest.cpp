#include "model/GridSubdivision.h"
#include "support/ContextTranslator.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/WindowStage.h"

#include <QTest>

#include <optional>

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
}

} // namespace

class MainWindowMenusTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Menus
    void thereAreThreeMenus();
    void menusHoldTheirEntries_data();
    void menusHoldTheirEntries();
    void shortcutsAreTheStandardKeys_data();
    void shortcutsAreTheStandardKeys();
    void otherEntriesHaveNoShortcut_data();
    void otherEntriesHaveNoShortcut();
    void noShortcutStandsTwice();
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
    void theEntriesAreNotCheckable();
    void theWordsFollowTheMeter();
    void aWorkThatIsNotOpenedChangesNoWords();

    // The space bar
    void theSpaceActionStandsInNoMenu();
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

void MainWindowMenusTest::thereAreThreeMenus()
{
    QStringList titles;
    for (const QAction* action : stage_->window().menuBar()->actions())
        titles.append(action->text());
    QCOMPARE(titles, (QStringList{"&Archivo", "&Edición", "&Ver"}));
}

void MainWindowMenusTest::menusHoldTheirEntries_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("entries");
    QTest::newRow("Archivo") << "&Archivo"
                             << QStringList{"Obra nueva…",
                                            "Abrir obra…",
                                            "Guardar",
                                            "-",
                                            "Importar audio de voz…",
                                            "-",
                                            "Exportar WAV…",
                                            "Exportar MP3…",
                                            "Exportar MIDI…",
                                            "-",
                                            "Salir"};
    QTest::newRow("Edición") << "&Edición" << QStringList{"Deshacer", "Rehacer"};
    QTest::newRow("Ver") << "&Ver"
                         << QStringList{"Qué marca la grilla", "-", "Acercar (tiempo)",
                                        "Alejar (tiempo)"};
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
    for (const char* entry :
         {"Importar audio de voz…", "Exportar WAV…", "Exportar MP3…", "Exportar MIDI…",
          "Pulso (el pie)", "División binaria (de a 2)", "Subdivisión (de a 4)"})
        QTest::newRow(entry) << QString(entry);
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
        << "inform | Abrir obra | Todavía no hay ninguna obra guardada.\n\nCuando guardes esta "
           "(Archivo → Guardar), va a aparecer acá.";
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
    QTest::newRow("Open") << int(QKeySequence::Open) << "inform | Abrir obra | ";
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
    QCOMPARE(stage.window().windowTitle(), "MainWindow: Velta — MainWindow: Obra sin título");
    for (const char* title : {"&Archivo", "&Edición", "&Ver", "Qué marca la grilla"})
        QVERIFY(Widgets::menu(stage.window(), QString("MainWindow: ") + title));
    for (const char* entry : {"Obra nueva…", "Salir", "Deshacer", "Alejar (tiempo)"})
        QVERIFY(Widgets::entry(stage.window(), QString("MainWindow: ") + entry));
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

void MainWindowMenusTest::theEntriesAreNotCheckable()
{
    const QJsonObject before = stage_->song().toJson();
    for (QAction* action : gridMenu()->actions()) {
        action->trigger();
        QVERIFY(!action->isCheckable() && !action->isChecked());
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

void MainWindowMenusTest::theSpaceActionStandsInNoMenu()
{
    const QAction* action = spaceAction();
    QVERIFY(action);
    QCOMPARE(action->shortcuts(), QList{QKeySequence(Qt::Key_Space)});
    QCOMPARE(action->shortcutContext(), Qt::ApplicationShortcut);
    QVERIFY(!Widgets::entry(stage_->window(), "Reproducir/Pausar"));
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

QTEST_MAIN(MainWindowMenusTest)
#include "MainWindowMenusTest.moc"
