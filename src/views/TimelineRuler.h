#pragma once

#include "music/TimeSignature.h"

#include <QWidget>

class Project;

/// Where beats and pixels of a ruler meet.
struct RulerViewport {
    /// Pixels from beat 0 to the ruler's left margin.
    double scrollPixels = 0.0;
    /// A ruler with 0 or less shows nothing.
    double pixelsPerBeat = 48.0;
    /// Pixels.
    int leftMargin = 0;

    /// The beat under a pixel, at least 0.
    double beatAtX(int x) const;

    /// The pixel of a beat.
    long xOfBeat(double beat) const;

    friend bool operator==(const RulerViewport&, const RulerViewport&) = default;
};

/// The strip of bars and beats above an editor. Its owner tells it where it stands; a click on it
/// asks for the playhead.
class TimelineRuler : public QWidget {
    Q_OBJECT

public:
    explicit TimelineRuler(QWidget* parent = nullptr);

    /// The project is not owned and may be null.
    void setProject(Project* project);

    void setPlayheadBeat(double beat);

    /// Shows the playhead in red while a voice is recorded.
    void setRecording(bool recording);

    void setViewport(double scrollPixels, double pixelsPerBeat, int leftMargin);

    const RulerViewport& viewport() const { return viewport_; }

    double beatAtX(int x) const { return viewport_.beatAtX(x); }

    /// Null for none.
    const Project* project() const { return project_; }

    /// In beats.
    double playheadBeat() const { return playheadBeat_; }

signals:
    /// The pulse nearest to a click, in beats.
    void seekRequested(double beat);

    /// The playhead is wanted at a beat, without a sound.
    void placeRequested(double beat);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// Whether there is a song, and a scale to show it in.
    bool showsTime() const { return project_ && viewport_.pixelsPerBeat > 0.0; }

    void paintBars(QPainter& painter) const;
    void paintBar(QPainter& painter, double bar) const;
    void paintPulses(QPainter& painter, double barStart) const;
    void paintPlayhead(QPainter& painter) const;

    /// Whether a line at a pixel is not hidden by the margin.
    bool isShown(long x) const { return x >= viewport_.leftMargin - 1; }

    Project* project_ = nullptr;
    RulerViewport viewport_;
    double playheadBeat_ = 0.0;
    bool recording_ = false;
};
