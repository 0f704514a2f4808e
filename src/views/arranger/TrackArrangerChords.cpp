// How chords are chosen and laid.

#include "model/Project.h"
#include "music/ChordNames.h"
#include "playback/PlaybackEngine.h"
#include "views/ScrollIntoView.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/TrackArranger.h"

#include <QMenu>

#include <cmath>
#include <optional>

namespace {

constexpr int kDegrees = 7;
/// Of the menu of chords, above its triads.
constexpr int kSubmenus = 2;
constexpr int kPreviewOctave = 4;
constexpr int kPreviewVelocity = 80;

struct Chord {
    int degree = 0;
    ChordExtension extension = ChordExtension::Triad;
};

void addChords(QMenu* menu, const KeySignature& key, ChordExtension extension)
{
    for (int degree = 1; degree <= kDegrees; ++degree)
        menu->addAction(ChordNames::labelOf(key, degree, extension))
            ->setData(QVariant::fromValue(qMakePair(degree, static_cast<int>(extension))));
}

/// Lets the user choose a chord.
std::optional<Chord> askChord(QWidget* parent, const KeySignature& key, const QPoint& globalPos,
                              TrackArranger::OpenedBy by)
{
    QMenu menu(parent);
    addChords(menu.addMenu(TrackArranger::tr("Con séptima")), key, ChordExtension::Seventh);
    addChords(menu.addMenu(TrackArranger::tr("Con novena")), key, ChordExtension::Ninth);
    addChords(&menu, key, ChordExtension::Triad);
    if (by == TrackArranger::OpenedBy::Key)
        menu.setActiveAction(menu.actions().at(kSubmenus));
    const QAction* chosen = menu.exec(globalPos);
    if (!chosen || !chosen->data().isValid())
        return std::nullopt;
    const auto [degree, extension] = chosen->data().value<QPair<int, int>>();
    return Chord{degree, static_cast<ChordExtension>(extension)};
}

} // namespace

void TrackArranger::openHarmonyMenu(double beat, const QPoint& globalPos, OpenedBy by)
{
    if (!project_)
        return;
    const Project* asked = project_;
    const auto chord = askChord(this, asked->keySignature, globalPos, by);
    // The menu runs an event loop, in which another project may have been opened.
    if (chord && project_ == asked)
        layChord(beat, chord->degree, chord->extension);
}

void TrackArranger::insertHarmonyAtPlayhead(int degree, ChordExtension extension)
{
    if (project_ && degree >= 1 && degree <= kDegrees)
        layChord(stepUnderPlayhead(), degree, extension);
}

void TrackArranger::openHarmonyMenuAtPlayhead()
{
    if (!project_)
        return;
    const double beat = stepUnderPlayhead();
    const QPointF place(beat * ArrangerLayout::kBeatPixels, ArrangerLayout::kChordTop);
    ScrollIntoView::horizontally(*view_, place.x(), place.x());
    ScrollIntoView::vertically(*view_, place.y(), place.y() + ArrangerLayout::kChordHeight);
    openHarmonyMenu(beat, view_->viewport()->mapToGlobal(view_->mapFromScene(place)),
                    OpenedBy::Key);
}

double TrackArranger::stepUnderPlayhead() const
{
    const double step = snapBeats();
    const double playhead = playback_ ? playback_->playheadBeat() : 0.0;
    return std::floor(playhead / step) * step;
}

void TrackArranger::layChord(double beat, int degree, ChordExtension extension)
{
    const double bar = project_->beatsPerBar();
    project_->harmonyTrack.insertEvent(beat, bar - std::fmod(beat, bar), degree, extension, bar);
    if (playback_ && !project_->harmonyTrack.muted)
        playback_->previewChord(
            ChordVoicer::chordPitches(project_->keySignature, degree, extension, kPreviewOctave),
            kPreviewVelocity);
    emit edited();
}
