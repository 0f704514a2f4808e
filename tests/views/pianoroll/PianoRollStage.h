#pragma once

#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "support/ContentFixture.h"
#include "support/ProjectBuilder.h"
#include "support/TinyBank.h"
#include "views/GridMouse.h"
#include "views/pianoroll/LiveNotes.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoKeyboardWidget.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollScene.h"
#include "views/pianoroll/PianoRollViewport.h"

#include <QApplication>
#include <QLabel>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

/// An engine with a synthesiser that nobody hears: a piano, a pan flute and drums.
class SilentBand {
public:
    SilentBand()
    {
        files_.instruments().loadBuiltinGmInstruments();
        ContentFixture::write(files_.filePath("gm.sf2"),
                              TinyBank::bytes({{0, 0, 100}, {0, 75, 100}, {128, 0, 100}}));
        player_.loadGmBank(files_.filePath("gm.sf2"));
    }

    PlaybackEngine& engine() { return engine_; }

private:
    ContentFixture files_;
    SoundfontPlayer player_{SoundfontPlayer::Mode::Offline};
    PlaybackEngine engine_{&player_, nullptr, &files_.instruments()};
};

/// A song in 4/4 and C major:
///
///     0 Quena     a melody at beats 0..8: 60, 62 and 64 of a beat each from the start, and half a
///                 beat of 72 at beat 4
///     1 Bombo     a loop of the accompaniment
///     2 Flauta    a melody at beats 4..8: 67 at its start
///     3 Voz       nothing
inline void writeTune(Project& song)
{
    using namespace ProjectBuilder;
    const auto named = [](auto track, const char* name) {
        track.name = QString::fromUtf8(name);
        return track;
    };
    // A beat takes a minute, so that the clock stands still for a test.
    song.bpm = 1;
    song.tracks = {
        named(melodyTrack({melody({note(60, 0.0), note(62, 1.0), note(64, 2.0), note(72, 4.0, 0.5)},
                                  0.0, 8.0)},
                          "gm_piano"),
              "Quena"),
        named(loopTrack({loop("r", "bombo", 0.0, 8.0)}, "gm_bateria"), "Bombo"),
        named(melodyTrack({melody({note(67, 0.0)}, 4.0)}, "gm_flauta_pan"), "Flauta"),
        named(melodyTrack({}), "Voz")};
}

/// "pitch@start+length" of each note of a block.
inline QStringList written(const QList<NoteEvent>& notes)
{
    QStringList lines;
    for (const NoteEvent& note : notes)
        lines.append(
            QStringLiteral("%1@%2+%3").arg(note.pitch).arg(note.startBeat).arg(note.durationBeats));
    return lines;
}

/// The tune in a piano roll on the screen, with rows of 32 pixels, and the hands of a user on it.
class PianoRollStage : public GridMouse {
public:
    static constexpr int kRowPixels = 32;
    static constexpr int kGridHeight = 13 * kRowPixels;

    /// Without an engine unless there is one.
    explicit PianoRollStage(PlaybackEngine* engine = nullptr)
    {
        writeTune(song);
        if (engine)
            engine->setProject(&song);
        canvas.setContext(&song, engine);
        canvas.resize(1000, 500);
        canvas.show();
        QCoreApplication::processEvents();
        canvas.resize(1000, canvas.height() + kGridHeight - grid()->height());
        QCoreApplication::processEvents();
    }

    QWidget* grid() const override { return canvas.view()->viewport(); }

    QList<NoteEvent>& notes(int track = 0, int block = 0)
    {
        return song.tracks[track].melodyBlocks[block].notes;
    }

    QStringList tune(int track = 0, int block = 0) { return written(notes(track, block)); }

    // ---- Places: a beat is 64 pixels of the scene, which the zoom stretches ----

    /// In the middle of a row of the grid, as it is scrolled at the moment.
    QPoint at(double beat, int pitch) const
    {
        const double row = static_cast<double>(grid()->height()) / canvas.rows()->visibleRows();
        return {qRound(beat * 64.0 * canvas.rows()->zoomX()) -
                    canvas.view()->horizontalScrollBar()->value(),
                qRound((canvas.rows()->topPitch() - pitch + 0.5) * row)};
    }

    // ---- Mouse on the grid ----

    /// From one place to another in three moves, and up to the release.
    void drag(const QPoint& from, const QPoint& to) const
    {
        press(from);
        for (const int part : {1, 2, 3})
            move(from + (to - from) * part / 3);
        release(to);
    }

    /// Pulls a band around what lies between two places.
    void band(const QPoint& from, const QPoint& to) const
    {
        press(from, Qt::LeftButton, Qt::ShiftModifier);
        move((from + to) / 2);
        move(to);
        release(to);
    }

    /// By an angle, 120 to a notch.
    static void turnWheel(QWidget* widget, const QPoint& angle,
                          Qt::KeyboardModifiers modifiers = {})
    {
        const QPointF place = widget->rect().center();
        QWheelEvent event(place, widget->mapToGlobal(place), QPoint(), angle, Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &event);
    }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&canvas, key, modifiers);
    }

    // ---- What there is to see ----

    QList<int> selected() const { return canvas.scene()->selectedNotes(); }

    QList<NoteItem*> noteItems() const
    {
        QList<NoteItem*> found;
        for (QGraphicsItem* item : canvas.scene()->items(Qt::AscendingOrder)) {
            if (auto* note = qgraphicsitem_cast<NoteItem*>(item))
                found.append(note);
        }
        return found;
    }

    QString caption() const { return canvas.findChild<QLabel*>()->text(); }

    Project song;
    PianoRollCanvas canvas;
};

/// Who listens to edits: the count of them, and the project announced as changed after each.
class Editor {
public:
    explicit Editor(PianoRollStage& stage)
    {
        QObject::connect(&stage.canvas, &PianoRollCanvas::edited, &context_, [this, &stage] {
            ++edits_;
            emit stage.song.changed();
        });
    }

    int edits() const { return edits_; }

private:
    QObject context_;
    int edits_ = 0;
};
