#pragma once

#include "views/SceneWidth.h"
#include "views/pianoroll/NoteItem.h"

#include <QGraphicsScene>

class Project;
class QGraphicsView;
struct MelodyBlock;
struct Track;

/// The notes of one block, those of other tracks showing through behind them, and the playhead.
/// Everything is made anew from the project at each rebuild, so pointers to items live until then.
class PianoRollScene : public QGraphicsScene {
    Q_OBJECT

public:
    explicit PianoRollScene(QObject* parent = nullptr);

    /// Shows the notes of a block, which may be null, and behind them those of some tracks, each
    /// in a colour of its own; an index that stands for no track is passed over. Notes whose place
    /// is not finite or beyond PianoRollLayout::kMostBeats are left out. The playhead stands at
    /// beat 0 afterwards.
    void rebuild(const Project& project, const MelodyBlock* block, const QList<int>& ghostTracks,
                 SceneWidth width = SceneWidth::Fit);

    /// Gives the scene the size of the song.
    void fit(const Project& project, SceneWidth width = SceneWidth::Fit);

    /// Leaves nothing, not even the playhead.
    void empty();

    /// Writes a sentence over the notes, until the next rebuild. See placeMessage().
    void showMessage(const QString& text);

    /// Puts the sentence, if there is one, into the middle of what a view shows.
    void placeMessage(const QGraphicsView& view);

    void setPlayheadBeat(double beat);

    /// Shows the playhead in red while a voice is recorded.
    void setRecording(bool recording);

    bool isRecording() const { return recording_; }

    /// The topmost note at a place, or null. Notes that only show through are none.
    NoteItem* noteAt(const QPointF& place) const;

    /// Indices of the selected notes, ascending.
    QList<int> selectedNotes() const;

    /// Selects the notes of some indices and no other.
    void selectNotes(const QList<int>& indices);

private:
    void addGhosts(const Project& project, const QList<int>& tracks);
    void addGhostsOf(const Track& track, const QColor& color);
    void addNotes(const MelodyBlock& block);
    void addPlayhead();

    QPen playheadPen() const;

    QGraphicsLineItem* playhead_ = nullptr;
    bool recording_ = false;
    QGraphicsTextItem* message_ = nullptr;
};
