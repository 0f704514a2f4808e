#pragma once

#include "views/Zoom.h"
#include "views/pianoroll/PianoRollLayout.h"

#include <QObject>
#include <QVariantAnimation>

class QGraphicsView;

/// What a view of the piano roll shows of the scene: which rows, which are as tall as the view
/// allows, and the song at which scale. It belongs to the view.
class PianoRollViewport : public QObject {
    Q_OBJECT

public:
    explicit PianoRollViewport(QGraphicsView* view);

    int visibleRows() const { return rows_.count; }

    int topPitch() const { return rows_.top; }

    double zoomX() const { return zoomX_; }

    double zoomY() const { return zoomY_; }

    bool contains(int pitch) const { return rows_.contains(pitch); }

    /// Whether some of the notes is in sight, or there is none.
    bool containsAnyOf(const QList<NoteEvent>& notes) const;

    /// The usual rows, in the scale 1.
    void reset();

    /// All pitches of some notes at once; the usual rows for none.
    void showAll(const QList<NoteEvent>& notes);

    /// What one looks at stays where it is; see Zoom::anchor().
    void zoomHorizontal(double factor, double playheadX, Zoom::By by);

    /// A factor above 1 shows one row fewer, any other one more.
    void zoomVertical(double factor);

    /// Puts a pitch into the top row, or the nearest that can stand there.
    void scrollToTopPitch(int pitch, bool animated);

    /// By no more rows than it takes to show a pitch.
    void scrollTo(int pitch);

    void scrollNotes(int delta);

    /// Turns the wheel by an angle, 120 to a row; a positive one shows higher notes.
    void wheelNotes(int angleDelta);

    /// Makes the rows as tall as the view allows.
    void applyVerticalFit();

signals:
    /// The scale is another one, or was set anew.
    void scaled();

private:
    void setScale(double x, double y, double anchor);

    QGraphicsView* view_;
    PitchRows rows_;
    double zoomX_ = 1.0;
    double zoomY_ = 1.0;
    int wheelRemainder_ = 0;
    QVariantAnimation scrollAnimation_;
};
