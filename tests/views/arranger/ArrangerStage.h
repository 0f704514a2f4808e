#pragma once

#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "support/ContentFixture.h"
#include "support/ProjectBuilder.h"
#include "views/GridMouse.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerHeaderColumn.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/TrackArranger.h"

#include <QApplication>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>

/// A library of one rhythm with the layers "bombo" and "palmas" of drums, "bajo" and "piano" of
/// instruments.
class ArrangerContent {
public:
    ArrangerContent()
    {
        files_.addPackage("r", R"({"rhythm": {"id": "r"}, "loopLayers": [
            {"id": "bombo", "pitched": false}, {"id": "palmas", "pitched": false},
            {"id": "bajo", "pitched": true}, {"id": "piano", "pitched": true}]})");
        files_.library().reload();
    }

    LoopLibrary* library() const { return &files_.library(); }

    ContentFixture& files() { return files_; }

private:
    mutable ContentFixture files_;
};

/// A song in 4/4 with every kind of lane and block:
///
///     y    0  chords             I in bar 1, IV and V7 in bar 2
///         26  VELTAS
///         44  0 Quena            melodies at beats 0..4 and 8..12
///         86  2 Flauta           a melody off the grid, 2.5..6.5
///        128  voice 0 Ana        a clip at 1.25..4.25
///        170  voice 1 Beto       a clip at 16..20
///        212  ACOMPAÑAMIENTO
///        230  Percusión
///        252  1 Bombo            loops at 0..8 and 8..16
///        294  Instrumental
///        316  3 Bajo             a loop at 4..8
///        358  end of the lanes; the scene is 2048 by 362
inline void writeSong(Project& song)
{
    using namespace ProjectBuilder;
    const auto named = [](auto track, const char* name) {
        track.name = QString::fromUtf8(name);
        return track;
    };
    song.tracks = {named(melodyTrack({melody(notesInARow({60, 62})), melody({}, 8.0)}), "Quena"),
                   named(loopTrack({loop("r", "bombo", 0.0, 8.0, LoopSection::Intro, 2),
                                    loop("r", "bombo", 8.0, 8.0)}),
                         "Bombo"),
                   named(melodyTrack({melody({note(70, 0.0)}, 2.5)}), "Flauta"),
                   named(loopTrack({loop("r", "bajo", 4.0, 4.0, LoopSection::Final, 3)}), "Bajo")};
    song.audioTracks = {named(voiceTrack({clip("a.wav", 1.25, 3.0)}), "Ana"),
                        named(voiceTrack({clip("b.wav", 16.0, 4.0)}), "Beto")};
    song.harmonyTrack = harmony({1, 4});
    song.harmonyTrack.blocks[1].events = {chord(4, 0.0, 2.0),
                                          chord(5, 2.0, 2.0, ChordExtension::Seventh)};
}

// Heights of the song in which a lane is pressed.
inline constexpr int kChordsY = 13;
inline constexpr int kVeltasY = 35;
inline constexpr int kQuenaY = 65;
inline constexpr int kFlautaY = 107;
inline constexpr int kAnaY = 149;
inline constexpr int kBetoY = 191;
inline constexpr int kAccompanimentY = 221;
inline constexpr int kPercussionY = 241;
inline constexpr int kBomboY = 273;
inline constexpr int kInstrumentalY = 305;
inline constexpr int kBajoY = 337;

/// The song in an arranger on the screen, and the hands of a user on it. There is no engine.
class ArrangerStage : public GridMouse {
public:
    ArrangerStage()
    {
        writeSong(song);
        arranger.setContext(&song, nullptr, content.library());
        arranger.resize(1000, 500);
        arranger.show();
        QCoreApplication::processEvents();
    }

    QWidget* grid() const override { return arranger.view()->viewport(); }

    // ---- Places: a beat is 32 pixels of the scene, which the zoom stretches ----

    /// In the grid, as it is scrolled at the moment.
    QPoint at(double beat, int sceneY) const
    {
        return QPoint(qRound(beat * 32.0 * arranger.zoomX()), sceneY) - scroll();
    }

    /// The scroll bars of the grid.
    QPoint scroll() const
    {
        return {arranger.view()->horizontalScrollBar()->value(),
                arranger.view()->verticalScrollBar()->value()};
    }

    // ---- Mouse on the grid ----

    void doubleClick(const QPoint& place) const
    {
        click(place);
        QTest::mouseDClick(grid(), Qt::LeftButton, {}, place);
        release(place);
    }

    /// From a place over some pixels and up to the release, in three moves.
    void drag(const QPoint& place, int pixels) const
    {
        press(place);
        for (const int part : {pixels / 3, pixels / 2, pixels})
            move(place + QPoint(part, 0));
        release(place + QPoint(pixels, 0));
    }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&arranger, key, modifiers);
    }

    // ---- What there is to see ----

    QList<BlockRef> selected() const
    {
        QList<BlockRef> blocks;
        for (QGraphicsItem* item : arranger.scene()->selectedItems())
            blocks.append(qgraphicsitem_cast<BlockItem*>(item)->block());
        return blocks;
    }

    ArrangerContent content;
    Project song;
    TrackArranger arranger;
};

/// A menu as its user reads it: "text" for an entry, "text: (entries)" for a menu in it.
inline QStringList written(const QMenu& menu)
{
    QStringList lines;
    for (const QAction* action : menu.actions()) {
        lines.append(action->menu() ? action->text() + ": " + written(*action->menu()).join(' ')
                                    : action->text());
    }
    return lines;
}

/// Answers the next menu that opens, from the event loop that it runs in: with the texts of the
/// entries to choose, one in the other, or with Escape for none. Gives what the menu said.
class MenuAnswer {
public:
    explicit MenuAnswer(const QStringList& choice) : choice_(choice)
    {
        timer_.setInterval(1);
        QObject::connect(&timer_, &QTimer::timeout, [this] { answer(); });
        timer_.start();
    }

    const QStringList& entries() const { return entries_; }

    /// Of the menu's top left corner.
    QPoint place() const { return place_; }

    bool wasAsked() const { return !entries_.isEmpty(); }

private:
    void answer()
    {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return;
        timer_.stop();
        entries_ = written(*menu);
        place_ = menu->pos();
        for (const QString& text : choice_) {
            const auto actions = menu->actions();
            for (QAction* action : actions) {
                if (action->text() != text)
                    continue;
                menu->setActiveAction(action);
                QTest::keyClick(menu, Qt::Key_Return);
                if (!action->menu())
                    return;
                menu = action->menu();
                break;
            }
        }
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
    }

    QStringList choice_;
    QStringList entries_;
    QPoint place_;
    QTimer timer_;
};
