#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/EditorFocus.h"
#include "shell/FocusAreas.h"
#include "shell/GridLevelNames.h"
#include "shell/LoopBrowser.h"
#include "shell/MainWindow.h"
#include "shell/TransportControls.h"
#include "shell/controls/PlainText.h"
#include "shell/theme/ThemeManager.h"
#include "shell/theme/TitleBar.h"
#include "shell/theme/UserSettings.h"
#include "views/EditCommand.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoRollCanvas.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QHash>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>

using namespace Qt::Literals::StringLiterals;

using Card = TransportControls::Card;

namespace {

constexpr auto kCountInKey = "contarAntesDeGrabar"_L1;

/// Gives an entry its keys, and has the button of the ribbon that does the same tell them.
QAction* withKeys(QAction* entry, const QKeySequence& keys, TransportControls* ribbon, Card card)
{
    entry->setShortcut(keys);
    ribbon->tellShortcut(card, keys);
    return entry;
}

} // namespace

void MainWindow::buildMenus()
{
    buildFileMenu();
    buildEditMenu();
    buildViewMenu();
    buildPlaybackMenu();
    buildOwnMenu();
    buildHelpMenu();
}

void MainWindow::buildFileMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Archivo"));
    menu->addAction(tr("Obra nueva…"), this, &MainWindow::newProject)
        ->setShortcuts(QKeySequence::New);
    menu->addAction(tr("Abrir obra…"), this, &MainWindow::openProjectDialog)
        ->setShortcuts(QKeySequence::Open);
    recentMenu_ = menu->addMenu(tr("Obras recientes"));
    connect(recentMenu_, &QMenu::aboutToShow, this, &MainWindow::fillRecentMenu);
    menu->addAction(tr("Guardar"), this, &MainWindow::saveCurrentProject)
        ->setShortcuts(QKeySequence::Save);
    menu->addAction(tr("Guardar como…"), this, &MainWindow::saveAs)
        ->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_S);
    menu->addAction(tr("Duplicar obra"), this, &MainWindow::duplicateWork);
    menu->addAction(tr("Cambiar nombre…"), this, &MainWindow::renameWork);
    menu->addSeparator();
    withKeys(menu->addAction(tr("Importar audio de voz…"), this, &MainWindow::importVoiceFile),
             Qt::CTRL | Qt::Key_I, transport_, Card::Import);
    menu->addSeparator();
    withKeys(menu->addAction(tr("Exportar WAV…"), this, [this] { exportAudio(false); }),
             Qt::CTRL | Qt::SHIFT | Qt::Key_E, transport_, Card::ExportWav);
    withKeys(menu->addAction(tr("Exportar MP3…"), this, [this] { exportAudio(true); }),
             Qt::CTRL | Qt::Key_E, transport_, Card::ExportMp3);
    withKeys(menu->addAction(tr("Exportar MIDI…"), this, &MainWindow::exportMidi),
             Qt::CTRL | Qt::ALT | Qt::Key_E, transport_, Card::ExportMidi);
    menu->addAction(tr("Imprimir o guardar hoja…"), this, &MainWindow::printSheet)
        ->setShortcuts(QKeySequence::Print);
    menu->addAction(tr("Exportar obra completa…"), this, &MainWindow::exportWork);
    menu->addSeparator();
    menu->addAction(tr("Salir"), this, &MainWindow::close)->setShortcuts(QKeySequence::Quit);
}

void MainWindow::buildEditMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Edición"));
    undoAction_ = menu->addAction(tr("Deshacer"), this, &MainWindow::undo);
    undoAction_->setShortcuts(QKeySequence::Undo);
    redoAction_ = menu->addAction(tr("Rehacer"), this, &MainWindow::redo);
    redoAction_->setShortcuts(QKeySequence::Redo);
    undoAction_->setEnabled(false);
    redoAction_->setEnabled(false);
    addEditCommands(menu);
}

void MainWindow::addEditCommands(QMenu* menu)
{
    const QHash<EditCommand, QString> texts{{EditCommand::Cut, tr("Cortar")},
                                            {EditCommand::Copy, tr("Copiar")},
                                            {EditCommand::Paste, tr("Pegar")},
                                            {EditCommand::Duplicate, tr("Duplicar")},
                                            {EditCommand::SelectAll, tr("Seleccionar todo")}};
    menu->addSeparator();
    for (const EditCommand command : kEditCommands) {
        if (command == EditCommand::SelectAll)
            menu->addSeparator();
        QAction* entry = menu->addAction(texts.value(command), this,
                                         [this, command] { keyEditor().perform(command); });
        entry->setShortcut(EditKeys::keysOf(command));
        connect(menu, &QMenu::aboutToShow, entry,
                [this, entry, command] { entry->setEnabled(keyEditor().can(command)); });
        // The keys ask again.
        connect(menu, &QMenu::aboutToHide, entry, [entry] { entry->setEnabled(true); });
    }
}

CommandedEditor& MainWindow::keyEditor() const
{
    if (editorFocus_->last() == arranger_)
        return *arranger_;
    return *pianoRoll_->notes();
}

void MainWindow::buildViewMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Ver"));
    subdivisionMenu_ = menu->addMenu(tr("Qué marca la grilla"));
    auto* levels = new QActionGroup(this);
    for (const GridSubdivisionLevel level : kGridLevels) {
        QAction* action = subdivisionMenu_->addAction(
            QString(), transport_, [this, level] { transport_->chooseSubdivision(level); });
        action->setData(QVariant::fromValue(level));
        action->setCheckable(true);
        levels->addAction(action);
    }
    connect(transport_, &TransportControls::subdivisionChanged, this,
            &MainWindow::updateSubdivisionMenu);
    updateSubdivisionMenu();
    menu->addSeparator();
    QAction* zoomIn = menu->addAction(tr("Acercar (tiempo)"), this, &MainWindow::zoomIn);
    zoomIn->setShortcuts(QKeySequence::ZoomIn);
    transport_->tellShortcut(Card::ZoomIn, zoomIn->shortcut());
    QAction* zoomOut = menu->addAction(tr("Alejar (tiempo)"), this, &MainWindow::zoomOut);
    zoomOut->setShortcuts(QKeySequence::ZoomOut);
    transport_->tellShortcut(Card::ZoomOut, zoomOut->shortcut());
    menu->addSeparator();
    transport_->bindSwitch(Card::Follow, withKeys(menu->addAction(tr("Seguir el cabezal")),
                                                  Qt::CTRL | Qt::Key_J, transport_, Card::Follow));
}

void MainWindow::buildPlaybackMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Reproducción"));
    menu->addAction(makePlaybackAction());
    withKeys(menu->addAction(tr("Detener"), this, &MainWindow::stopPlayback),
             Qt::SHIFT | Qt::Key_Space, transport_, Card::Stop);
    transport_->bindSwitch(Card::Repeat, withKeys(menu->addAction(tr("Repetir")),
                                                  Qt::CTRL | Qt::Key_L, transport_, Card::Repeat));
    transport_->bindSwitch(Card::Metronome,
                           withKeys(menu->addAction(tr("Metrónomo")), Qt::CTRL | Qt::Key_M,
                                    transport_, Card::Metronome));
    menu->addSeparator();
    withKeys(menu->addAction(tr("Grabar voz"), this, &MainWindow::toggleVoiceRecording),
             Qt::CTRL | Qt::Key_R, transport_, Card::Record);
    countInAction_ = menu->addAction(tr("Contar un compás antes de grabar"));
    countInAction_->setCheckable(true);
    countInAction_->setChecked(userSettings().value(kCountInKey).toBool());
    connect(countInAction_, &QAction::toggled, this,
            [](bool on) { userSettings().setValue(kCountInKey, on); });
    transport_->addSetting(Card::Record, countInAction_);
}

void MainWindow::buildOwnMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("Ve&lta"));
    withKeys(menu->addAction(tr("Agregar velta"), this, &MainWindow::addTrack),
             Qt::CTRL | Qt::Key_T, transport_, Card::AddTrack);
    withKeys(menu->addAction(tr("Quitar velta"), this, &MainWindow::removeSelectedTrack),
             Qt::CTRL | Qt::SHIFT | Qt::Key_T, transport_, Card::RemoveTrack);
    menu->addSeparator();
    menu->addAction(tr("Área siguiente"), Qt::Key_F6, this, [this] { changeArea(1); });
    menu->addAction(tr("Área anterior"), Qt::SHIFT | Qt::Key_F6, this, [this] { changeArea(-1); });
}

void MainWindow::changeArea(int step)
{
    FocusAreas::go({transport_, pianoRoll_, arranger_, loopBrowser_, headerPanel_}, step);
}

void MainWindow::updateSubdivisionMenu()
{
    const bool compound = project_ && project_->timeSignature.isCompound;
    for (QAction* action : subdivisionMenu_->actions()) {
        const auto level = action->data().value<GridSubdivisionLevel>();
        action->setText(gridLevelName(level, compound));
        action->setChecked(level == transport_->subdivision());
    }
}

QAction* MainWindow::makePlaybackAction()
{
    auto* action = new QAction(tr("Reproducir/Pausar"), this);
    action->setShortcut(Qt::Key_Space);
    action->setShortcutContext(Qt::ApplicationShortcut);
    action->setAutoRepeat(false);
    connect(action, &QAction::triggered, this, [this] {
        // The keys are those of the list or menu that is open.
        if (!QApplication::activePopupWidget())
            transport_->togglePlayback();
    });
    addAction(action);
    return action;
}

void MainWindow::buildStatusBar()
{
    hint_ = new QLabel(
        tr("Espacio reproduce · A-G tocan notas (Shift = sostenido, Z/X cambian de octava) · "
           "Shift+arrastre selecciona"));
    // It ends at the edge of a narrow window, which is no reason to make that wider.
    hint_->setMinimumWidth(1);
    statusBar()->addWidget(hint_);
    // The bar itself hides nothing behind a message that comes before the window is shown.
    connect(statusBar(), &QStatusBar::messageChanged, this, &MainWindow::updateHint);
    // What lasts has to be permanent: a message takes everything else out of sight, and any menu
    // wipes a message away.
    takeNotice_ = new QLabel;
    tellTake();
    takeNotice_->setObjectName(u"grabando"_s);
    takeNotice_->setVisible(false);
    statusBar()->addPermanentWidget(takeNotice_);
    if (!hasBank_)
        addMissingBankMark();
    themeButton_ = new QPushButton;
    themeButton_->setObjectName(u"toggle_modo"_s);
    themeButton_->setCursor(Qt::PointingHandCursor);
    // After a click the keys are still those of the editors.
    themeButton_->setFocusPolicy(Qt::TabFocus);
    statusBar()->addPermanentWidget(themeButton_);

    ThemeManager* theme = ThemeManager::instance();
    updateThemeButton(theme->isDark());
    connect(themeButton_, &QPushButton::clicked, theme,
            [theme] { theme->setDark(!theme->isDark()); });
    connect(theme, &ThemeManager::themeChanged, this, &MainWindow::onThemeChanged);
}

void MainWindow::updateHint()
{
    hint_->setVisible(!isSinging() && statusBar()->currentMessage().isEmpty());
}

void MainWindow::addMissingBankMark()
{
    const QString sentence =
        tr("Falta el banco de sonidos %1 — la app funciona sin sonido.").arg(bankPath());
    auto* mark = new QLabel(tr("Falta el banco de sonidos"));
    mark->setObjectName(u"falta_banco"_s);
    mark->setToolTip(plainToolTip(sentence));
    auto* whatToDo = new QPushButton(tr("¿Qué hago?"));
    whatToDo->setObjectName(u"toggle_modo"_s);
    whatToDo->setCursor(Qt::PointingHandCursor);
    statusBar()->addPermanentWidget(mark);
    statusBar()->addPermanentWidget(whatToDo);
    connect(whatToDo, &QPushButton::clicked, this, [this, sentence] {
        prompts_.inform(this, tr("Sin sonido"),
                        tr("%1\n\nCopiá el archivo a esa carpeta, o instalá Velta de nuevo, y "
                           "volvé a abrir el programa.")
                            .arg(sentence));
    });
}

void MainWindow::updateThemeButton(bool dark)
{
    themeButton_->setText(dark ? tr("☀ Modo claro") : tr("🌙 Modo oscuro"));
    // A screen reader would spell the symbol.
    themeButton_->setAccessibleName(dark ? tr("Modo claro") : tr("Modo oscuro"));
}

void MainWindow::updateTitleBar(bool dark)
{
    setTitleBarDark(reinterpret_cast<void*>(winId()), dark);
}

void MainWindow::onThemeChanged(bool dark)
{
    updateThemeButton(dark);
    updateTitleBar(dark);
    // The views hold colours of the former look.
    if (project_)
        emit project_->changed();
}
