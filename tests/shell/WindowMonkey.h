#pragma once

#include "MonkeyPrompts.h"
#include "ScenePicture.h"
#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/MainWindow.h"
#include "shell/VariationButton.h"
#include "storage/LocalStorageProvider.h"
#include "support/Await.h"
#include "support/FluidSpy.h"
#include "support/SeededRandom.h"
#include "support/SoundFile.h"
#include "support/Tones.h"
#include "support/UserHome.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollLayout.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QMenuBar>
#include <QPushButton>
#include <QSet>
#include <QTimer>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <memory>

/// Plays with a window of its own: mouse, wheel, keys, menus, loops, other works, playback. The
/// same seed plays the same.
class WindowMonkey : public QObject {
public:
    explicit WindowMonkey(unsigned seed)
        : random_(seed), prompts_(random_, QDir(home_.filePath(".")))
    {
        FluidSpy::reset();
    }

    /// Makes the window and some works to open; false if that fails.
    bool begin()
    {
        qputenv("VELTA_CONTENT_URL", "http://127.0.0.1:1");
        home_.installBank();
        const QString loops = home_.filePath("resources/loops");
        if (!copyFiles(VELTA_LOOPS_DIR "/installed", loops + "/installed") ||
            !copyFiles(VELTA_LOOPS_DIR "/grooves", loops + "/grooves") ||
            !SoundFile::writeExact(home_.filePath("voz.wav"), Tones::sine(440.0, 44100, 44100)))
            return false;
        writeBytes(home_.filePath("texto.wav"), "no sound at all");
        for (const QFileInfo& work : QDir(VELTA_HOSTILE_WORKS).entryInfoList(QDir::Files))
            writeBytes(home_.projectFile(work.completeBaseName()), bytesOf(work.filePath()));
        window_ = std::make_unique<MainWindow>(nullptr, prompts_);
        FluidSpy::reset();
        window_->resize(1200, 760);
        window_->show();
        for (VariationButton* button : window_->findChildren<VariationButton*>())
            button->setDragRunner([](QDrag&) {});
        // What runs an event loop of its own, a menu or a dialog, is dealt with from inside it.
        connect(&inside_, &QTimer::timeout, this, [this] { dealWithPopups(); });
        inside_.start(10);
        return QTest::qWaitForWindowExposed(window_.get());
    }

    /// Does one thing.
    void act()
    {
        using Deed = void (WindowMonkey::*)();
        static const QList<std::pair<int, Deed>> deeds{
            {30, &WindowMonkey::useMouse},      {12, &WindowMonkey::dragMouse},
            {15, &WindowMonkey::pressKey},      {4, &WindowMonkey::turnWheel},
            {5, &WindowMonkey::chooseEntry},    {6, &WindowMonkey::placeLoop},
            {4, &WindowMonkey::undoOrRedo},     {4, &WindowMonkey::playOrStop},
            {1, &WindowMonkey::exchangeWork},   {2, &WindowMonkey::addTrack},
            {1, &WindowMonkey::closeAndReopen}, {3, &WindowMonkey::waitABit}};
        // An entry of the menu closes it.
        if (!window_->isVisible())
            window_->show();
        int all = 0;
        for (const auto& deed : deeds)
            all += deed.first;
        int dice = random_.between(0, all - 1);
        for (const auto& [weight, deed] : deeds) {
            if ((dice -= weight) < 0) {
                prompts_.mayExport = song().endBeat() < 40.0;
                (this->*deed)();
                break;
            }
        }
        QApplication::processEvents();
        noteNotes();
    }

    /// What is wrong with the window as it stands; empty if nothing is.
    QString brokenLaw()
    {
        endGestures();
        for (QString (WindowMonkey::*law)() :
             {&WindowMonkey::staleScene, &WindowMonkey::lossOnDisk, &WindowMonkey::lossInUndo}) {
            if (const QString broken = (this->*law)(); !broken.isEmpty())
                return broken;
        }
        return {};
    }

    /// Writes a note into the open block that nobody is told of.
    bool writeInSecret()
    {
        MelodyBlock* open = roll().notes()->activeBlock();
        if (open)
            open->notes.append(NoteEvent());
        return open;
    }

    /// Ends all that sounds, and tells what sounds on; empty if nothing does.
    QString hangingNotes()
    {
        endGestures();
        engine().stop();
        engine().stopPreview();
        const auto isSilent = [this] {
            noteNotes();
            return sounding_.isEmpty();
        };
        if (await(isSilent))
            return {};
        QStringList notes;
        for (const auto& [channel, pitch] : std::as_const(sounding_))
            notes.append(QString("%1/%2").arg(channel).arg(pitch));
        return "These notes hang (channel/pitch): " + notes.join(' ');
    }

    /// The deeds that came last, the latest at the end.
    const QStringList& lastSteps() const { return steps_; }

private:
    Project& song() { return *window_->project(); }

    PlaybackEngine& engine() { return *window_->engine(); }

    TrackArranger& arranger() { return *window_->findChild<TrackArranger*>(); }

    PianoRollCanvas& roll() { return *window_->findChild<PianoRollCanvas*>(); }

    void note(const QString& step)
    {
        constexpr qsizetype kKept = 40;
        steps_.append(step);
        if (steps_.size() > kKept)
            steps_.removeFirst();
        if (qEnvironmentVariableIsSet("VELTA_MONKEY_LOUD"))
            qInfo("%s", qPrintable(step));
    }

    // ---- Deeds ----

    /// Mostly one of the editors, else anything that is seen.
    QWidget* someWidget()
    {
        if (random_.oneIn(2))
            return random_.oneIn(2) ? arranger().view()->viewport() : roll().view()->viewport();
        QList<QWidget*> seen;
        for (QWidget* widget : window_->findChildren<QWidget*>()) {
            if (widget->isVisible() && widget->isEnabled() && !widget->isWindow() &&
                !widget->size().isEmpty())
                seen.append(widget);
        }
        return seen.isEmpty() ? window_->centralWidget() : random_.pick(seen);
    }

    /// A view that is folded away has no height.
    QPoint somePlace(const QWidget& widget)
    {
        return {random_.between(0, std::max(widget.width(), 1) - 1),
                random_.between(0, std::max(widget.height(), 1) - 1)};
    }

    Qt::KeyboardModifiers someModifiers()
    {
        static const QList<Qt::KeyboardModifiers> modifiers{Qt::NoModifier,      Qt::NoModifier,
                                                            Qt::NoModifier,      Qt::ShiftModifier,
                                                            Qt::ControlModifier, Qt::AltModifier};
        return random_.pick(modifiers);
    }

    void useMouse()
    {
        QWidget* widget = someWidget();
        const QPoint place = somePlace(*widget);
        const Qt::KeyboardModifiers modifiers = someModifiers();
        const int kind = random_.between(0, 5);
        note(QString("click %1 on %2 at %3,%4")
                 .arg(kind)
                 .arg(widget->metaObject()->className())
                 .arg(place.x())
                 .arg(place.y()));
        if (kind == 0)
            QTest::mouseDClick(widget, Qt::LeftButton, modifiers, place);
        else
            QTest::mouseClick(widget, kind == 1 ? Qt::RightButton : Qt::LeftButton, modifiers,
                              place);
    }

    /// With a key or another deed in the middle of it, now and then.
    void dragMouse()
    {
        QPointer<QWidget> widget = someWidget();
        if (qobject_cast<VariationButton*>(widget))
            return;
        const QPoint from = somePlace(*widget);
        QPoint place = from;
        const Qt::KeyboardModifiers modifiers = someModifiers();
        QTest::mousePress(widget, Qt::LeftButton, modifiers, place);
        for (int moves = random_.between(1, 6); moves > 0 && widget; --moves) {
            const int reach = random_.oneIn(10) ? 3000 : 120;
            place += QPoint(random_.between(-reach, reach), random_.between(-reach, reach));
            moveMouse(*widget, place);
            if (random_.oneIn(12))
                pressKey();
            if (random_.oneIn(12))
                undoOrRedo();
        }
        if (!widget)
            return;
        note(QString("drag on %1 from %2,%3 to %4,%5")
                 .arg(widget->metaObject()->className())
                 .arg(from.x())
                 .arg(from.y())
                 .arg(place.x())
                 .arg(place.y()));
        QTest::mouseRelease(widget, Qt::LeftButton, modifiers, place);
    }

    /// A move with the button held, which QTest leaves out.
    static void moveMouse(QWidget& widget, const QPoint& place)
    {
        QMouseEvent move(QEvent::MouseMove, place, widget.mapToGlobal(place), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&widget, &move);
    }

    void pressKey()
    {
        static const QList<int> keys{
            Qt::Key_A,     Qt::Key_C,      Qt::Key_D,      Qt::Key_F,     Qt::Key_G,
            Qt::Key_S,     Qt::Key_V,      Qt::Key_X,      Qt::Key_Y,     Qt::Key_Z,
            Qt::Key_Space, Qt::Key_Delete, Qt::Key_Left,   Qt::Key_Right, Qt::Key_Up,
            Qt::Key_Down,  Qt::Key_Return, Qt::Key_Tab,    Qt::Key_1,     Qt::Key_5,
            Qt::Key_Plus,  Qt::Key_Minus,  Qt::Key_Escape, Qt::Key_Home,  Qt::Key_Backspace};
        QWidget* focus = QApplication::focusWidget();
        QWidget* widget = focus ? focus : window_.get();
        const auto key = static_cast<Qt::Key>(random_.pick(keys));
        const Qt::KeyboardModifiers modifiers = someModifiers();
        note(QString("key %1 with %2 on %3")
                 .arg(QKeySequence(key).toString())
                 .arg(modifiers.toInt(), 0, 16)
                 .arg(widget->metaObject()->className()));
        QTest::keyClick(widget, key, modifiers);
    }

    void turnWheel()
    {
        QWidget* widget = someWidget();
        const QPoint place = somePlace(*widget);
        const int angle = random_.oneIn(2) ? 120 : -120;
        note(QString("wheel %1 on %2").arg(angle).arg(widget->metaObject()->className()));
        QWheelEvent wheel(place, widget->mapToGlobal(place), {}, {0, angle}, Qt::NoButton,
                          someModifiers(), Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &wheel);
    }

    void chooseEntry()
    {
        QList<QAction*> entries;
        for (const QMenu* menu : window_->menuBar()->findChildren<QMenu*>()) {
            for (QAction* action : menu->actions()) {
                if (!action->menu() && !action->isSeparator() && action->isEnabled())
                    entries.append(action);
            }
        }
        if (entries.isEmpty())
            return;
        QAction* entry = random_.pick(entries);
        note("entry " + entry->text());
        entry->trigger();
    }

    void placeLoop()
    {
        const LoopLibrary& library = *window_->loopLibrary();
        const Rhythm rhythm = random_.pick(library.rhythms());
        const LoopLayer layer = random_.pick(library.layersForRhythm(rhythm.id));
        const int section = random_.between(0, 4);
        const int index = random_.between(0, 4);
        const double beat = random_.oneIn(4) ? -1.0 : random_.between(0, 40);
        note(QString("loop %1 %2 %3 at %4").arg(layer.id).arg(section).arg(index).arg(beat));
        window_->placeLoop(rhythm.id, layer.id, section, index, beat);
    }

    void undoOrRedo()
    {
        const bool back = random_.oneIn(2);
        note(back ? "undo" : "redo");
        back ? window_->undo() : window_->redo();
    }

    void playOrStop()
    {
        const int deed = random_.between(0, 3);
        note(QString("transport %1").arg(deed));
        if (deed == 0)
            engine().stop();
        else if (deed == 1)
            engine().setPlayheadBeat(random_.between(0.0, 40.0));
        else
            engine().play();
    }

    void exchangeWork()
    {
        static const QList<TimeSignature> meters{{4, 4, false}, {3, 4, false}, {6, 8, true}};
        const int deed = random_.between(0, 3);
        note(QString("another work %1").arg(deed));
        QStringList ids = QDir(home_.works()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        ids.append("no_hay");
        if (deed == 0)
            window_->startBlankProject();
        else if (deed == 1)
            window_->createProject(QString("Obra %1").arg(random_.between(0, 5)),
                                   random_.pick(meters), {}, random_.between(40, 240));
        else
            window_->openProjectById(random_.pick(ids));
    }

    void addTrack()
    {
        const bool more = song().tracks.size() < 6 && !random_.oneIn(3);
        note(more ? "another track" : "a track less");
        more ? window_->addTrack() : window_->removeSelectedTrack();
    }

    void closeAndReopen()
    {
        note("close");
        window_->close();
        window_->show();
    }

    void waitABit()
    {
        note("wait");
        QTest::qWait(random_.between(1, 60));
    }

    void dealWithPopups()
    {
        if (QWidget* popup = QApplication::activePopupWidget()) {
            static const QList<int> keys{Qt::Key_Down, Qt::Key_Down, Qt::Key_Right, Qt::Key_Return,
                                         Qt::Key_Escape};
            QTest::keyClick(popup, static_cast<Qt::Key>(random_.pick(keys)));
            if (++popupKeys_ > 20)
                popup->close();
            return;
        }
        popupKeys_ = 0;
        if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            if (random_.oneIn(3))
                dialog->reject();
            else if (const auto buttons = dialog->findChildren<QPushButton*>(); !buttons.isEmpty())
                random_.pick(buttons)->click();
        }
    }

    void endGestures()
    {
        arranger().endDrag();
        roll().endDrag();
        QApplication::processEvents();
    }

    // ---- Laws ----

    /// Whether a note of a damaged work can be drawn at all.
    static bool hasPlace(double beat, double length)
    {
        return std::isfinite(beat) && std::isfinite(length) &&
               std::abs(beat) <= PianoRollLayout::kMostBeats;
    }

    QString staleScene()
    {
        const QStringList blocks = ScenePicture::pictureOf(*arranger().scene());
        arranger().rebuildScene();
        const QString arrangerStale = ScenePicture::difference(
            "arranger", blocks, ScenePicture::pictureOf(*arranger().scene()));
        if (!arrangerStale.isEmpty())
            return arrangerStale;
        const QStringList notes = ScenePicture::pictureOf(*roll().scene());
        const MelodyBlock* open = roll().notes()->activeBlock();
        const auto drawn =
            open ? std::ranges::count_if(open->notes,
                                         [&](const NoteEvent& each) {
                                             return hasPlace(open->startBeat + each.startBeat,
                                                             each.durationBeats);
                                         })
                 : 0;
        if (open && notes.size() != drawn)
            return QString("The piano roll shows %1 notes of %2.").arg(notes.size()).arg(drawn);
        roll().rebuildScene();
        return ScenePicture::difference("piano roll", notes,
                                        ScenePicture::pictureOf(*roll().scene()));
    }

    /// Also that what was saved last, if anything, is a work.
    QString lossOnDisk()
    {
        const QJsonObject state = song().toJson();
        Project again;
        again.loadJson(QJsonDocument::fromJson(QJsonDocument(state).toJson()).object());
        if (again.toJson() != state)
            return "A work that is written and read is another one.";
        const QString id = window_->currentProjectId();
        if (id.isEmpty() || !QFile::exists(home_.projectFile(id)))
            return {};
        const std::unique_ptr<Project> saved(
            LocalStorageProvider(QString()).loadProject(id, nullptr));
        return saved ? QString() : "The work on disk cannot be read.";
    }

    QString lossInUndo()
    {
        const auto canUndo = [this] { return Widgets::entry(*window_, "Deshacer")->isEnabled(); };
        if (!canUndo())
            return {};
        // What is half typed or dragged becomes a finished edit by an undo.
        window_->findChild<TrackHeaderPanel*>()->takeTypedName();
        roll().endDrag();
        window_->findChild<TrackArranger*>()->endDrag();
        const QJsonObject before = song().toJson();
        window_->undo();
        window_->redo();
        return song().toJson() == before ? QString() : "Undo and redo are not inverse.";
    }

    /// Keeps the books of what sounds. An export has a synthesiser of its own, whose notes end with
    /// it wherever it is called off.
    void noteNotes()
    {
        for (const QString& call : FluidSpy::calls()) {
            const QStringList words = call.split(' ');
            const int channel = words.value(1).toInt();
            const std::pair key(channel, words.value(2).toInt());
            if (words[0] == "new_synth")
                ++exports_;
            else if (words[0] == "delete_synth")
                --exports_;
            else if (words[0] == "noteon" && exports_ == 0)
                sounding_.insert(key);
            else if (words[0] == "noteoff")
                sounding_.remove(key);
            else if (words[0] == "all_notes_off" || words[0] == "all_sounds_off")
                sounding_.removeIf([channel](const auto& sounding) {
                    return channel < 0 || sounding.first == channel;
                });
        }
        FluidSpy::reset();
    }

    UserHome home_;
    SeededRandom random_;
    MonkeyPrompts prompts_;
    std::unique_ptr<MainWindow> window_;
    QTimer inside_;
    int popupKeys_ = 0;
    QStringList steps_;
    QSet<std::pair<int, int>> sounding_;
    int exports_ = 0;
};
